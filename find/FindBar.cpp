#include "find/FindBar.h"

#include "command/CommandShortcut.h"
#include "controls/ElidedButton.h"
#include "controls/ElidedLabel.h"
#include "controls/VerbatimText.h"
#include "find/ExpressionReason.h"
#include "find/FindKeys.h"
#include "platform/settings/NotificationCenter.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

constexpr int kMargin = 6;
constexpr int kSpacing = 4;
constexpr int kFieldWidth = 100; // Minimum, in logical pixels.

QLineEdit *makeField(QWidget *parent, const char *name)
{
    auto *field = new QLineEdit(parent);
    field->setObjectName(QString::fromLatin1(name));
    field->setMinimumWidth(kFieldWidth);
    field->setClearButtonEnabled(true);
    return field;
}

QWidget *makeRow(QWidget *parent)
{
    auto *row = new QWidget(parent);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kSpacing);
    return row;
}

QString toolTip(const QString &meaning, const QKeySequence &keys)
{
    const QString suffix =
        keys.isEmpty() ? QString() : u" (%1)"_s.arg(keys.toString(QKeySequence::NativeText));
    return verbatimToolTip(meaning + suffix);
}

void label(QToolButton *button,
           const QString &face,
           const QString &meaning,
           const QKeySequence &keys = {})
{
    setVerbatimText(button, face);
    button->setToolTip(toolTip(meaning, keys));
    button->setAccessibleName(meaning);
}

void label(QLineEdit *field, const QString &meaning, const QKeySequence &keys)
{
    field->setPlaceholderText(meaning);
    field->setToolTip(toolTip(meaning, keys));
    field->setAccessibleName(meaning);
}

/// Derives the placeholder colour from the text colour. Desktops set the colour of text but rarely
/// that of placeholders, and Qt's default suits a light background only.
/// \param color the text colour. It is not read from the field, whose palette may still be the old
///        one while a palette change is delivered.
void makePlaceholderLegible(QLineEdit *field, QColor color)
{
    constexpr float kAlpha = 0.6F;
    color.setAlphaF(kAlpha);
    QPalette palette;
    palette.setColor(QPalette::PlaceholderText, color);
    field->setPalette(palette);
}

/// Returns a regular expression that matches exactly `string`.
QString escaped(const QString &string)
{
    QString result;
    for (const QChar unit : string) {
        if (u"\\^$.|?*+()[]{}"_s.contains(unit))
            result += u'\\';
        result += unit;
    }
    return result;
}

} // namespace

FindBar::FindBar(QWidget *parent)
    : QWidget(parent)
{
    setBackgroundRole(QPalette::Window);
    setAutoFillBackground(true);
}

void FindBar::make()
{
    if (m_searchRow != nullptr)
        return;
    auto *layout = new QGridLayout(this);
    layout->setContentsMargins(kMargin, kSpacing + 1, kMargin, kSpacing);
    layout->setSpacing(kSpacing);
    layout->setColumnStretch(0, 1);
    // In the top row, so that the fields keep their place when the message appears or disappears.
    m_errorLabel = new ElidedLabel(this);
    m_errorLabel->setObjectName(u"findError"_s);
    m_errorLabel->hide();
    layout->addWidget(m_errorLabel, 0, 0, 1, 2);
    makeSearchRow();
    makeReplaceRow();
    layout->addWidget(m_searchField, 1, 0);
    layout->addWidget(m_searchRow, 1, 1);
    layout->addWidget(m_replaceField, 2, 0);
    layout->addWidget(m_replaceRow, 2, 1);
    setTabOrders();
    setFocusProxy(m_searchField);
    NotificationCenter::defaultCenter().addObserver(
        UIWordingProfileDidChange, this, [this] { relabel(); });
    relabel();
}

void FindBar::setVisible(bool isVisible)
{
    if (isVisible)
        make();
    QWidget::setVisible(isVisible);
}

QToolButton *FindBar::addButton(QWidget *row, const char *name)
{
    auto *button = new ElidedButton(row);
    button->setObjectName(QString::fromLatin1(name));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus); // A click keeps the focus in the field.
    row->layout()->addWidget(button);
    return button;
}

QToolButton *FindBar::addSwitch(QWidget *row, const char *name, bool FindPattern::*option)
{
    QToolButton *button = addButton(row, name);
    button->setCheckable(true);
    connect(button, &QToolButton::toggled, this, [this, option](bool isOn) {
        m_pattern.*option = isOn;
        Q_EMIT patternDidChange();
    });
    return button;
}

void FindBar::makeSearchRow()
{
    m_searchRow = makeRow(this);
    auto *layout = qobject_cast<QHBoxLayout *>(m_searchRow->layout());
    m_searchField = makeField(this, "findField");
    m_searchField->installEventFilter(this);
    m_countLabel = new QLabel(m_searchRow);
    m_countLabel->setObjectName(u"findCount"_s);
    m_countLabel->setTextFormat(Qt::PlainText);
    m_countLabel->setAlignment(Qt::AlignCenter);
    m_countLabel->setMinimumWidth(fontMetrics().horizontalAdvance(u"0000 / 0000"_s));
    layout->addWidget(m_countLabel);
    m_previous = addButton(m_searchRow, "findPrevious");
    m_previous->setArrowType(Qt::UpArrow);
    m_next = addButton(m_searchRow, "findNext");
    m_next->setArrowType(Qt::DownArrow);
    m_case = addSwitch(m_searchRow, "findMatchCase", &FindPattern::matchesCase);
    m_words = addSwitch(m_searchRow, "findWholeWord", &FindPattern::wholeWords);
    m_expression =
        addSwitch(m_searchRow, "findRegularExpression", &FindPattern::isRegularExpression);
    m_wrap = addButton(m_searchRow, "findWrapAround");
    m_wrap->setCheckable(true);
    m_wrap->setChecked(m_wraps);
    m_close = addButton(m_searchRow, "findClose");
    connect(m_searchField, &QLineEdit::textChanged, this, [this](const QString &string) {
        m_pattern.string = string;
        Q_EMIT patternDidChange();
    });
    connect(m_wrap, &QToolButton::toggled, this, [this](bool isOn) { m_wraps = isOn; });
    connect(m_previous, &QToolButton::clicked, this, &FindBar::previousRequested);
    connect(m_next, &QToolButton::clicked, this, &FindBar::nextRequested);
    connect(m_close, &QToolButton::clicked, this, &FindBar::closeRequested);
}

void FindBar::makeReplaceRow()
{
    m_replaceRow = makeRow(this);
    auto *layout = qobject_cast<QHBoxLayout *>(m_replaceRow->layout());
    m_replaceField = makeField(this, "replaceField");
    m_replaceField->installEventFilter(this);
    connect(m_replaceField, &QLineEdit::textChanged, this, [this](const QString &string) {
        m_replacement = string;
    });
    m_replace = addButton(m_replaceRow, "replaceOne");
    m_replaceAll = addButton(m_replaceRow, "replaceAll");
    m_replacedLabel = new ElidedLabel(m_replaceRow);
    m_replacedLabel->setObjectName(u"replaceCount"_s);
    layout->addWidget(m_replacedLabel, 1);
    connect(m_replace, &QToolButton::clicked, this, &FindBar::replaceRequested);
    connect(m_replaceAll, &QToolButton::clicked, this, &FindBar::replaceAllRequested);
}

void FindBar::setTabOrders()
{
    const QList<QWidget *> order{m_searchField,
                                 m_replaceField,
                                 m_previous,
                                 m_next,
                                 m_case,
                                 m_words,
                                 m_expression,
                                 m_wrap,
                                 m_replace,
                                 m_replaceAll,
                                 m_close};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
}

void FindBar::setPatternText(const QString &string)
{
    make();
    m_searchField->setText(m_pattern.isRegularExpression ? escaped(string) : string);
}

void FindBar::focusSearchField()
{
    m_searchField->setFocus(Qt::ShortcutFocusReason);
    m_searchField->selectAll();
}

void FindBar::setReplaceIsShown(bool isShown)
{
    m_replaceIsShown = isShown;
    showState();
}

void FindBar::showCount(const FindSession::Count &count, bool isWrapped)
{
    m_count = count;
    m_isWrapped = isWrapped;
    showState();
}

QString FindBar::countText() const
{
    if (m_pattern.string.isEmpty() || m_error)
        return {};
    const QString number =
        m_count.number > 0 || hasNoMatch() ? QString::number(m_count.number) : u"–"_s;
    const QString total = QString::number(m_count.total) + (m_count.isComplete ? u""_s : u"…"_s);
    const QString wrapped = m_isWrapped && m_count.number > 0 ? u"↻ "_s : u""_s;
    return wrapped + number + u" / "_s + total;
}

QString FindBar::countToolTip() const
{
    if (m_countLabel->text().isEmpty())
        return {};
    if (hasNoMatch())
        return wording::text(u"editor.find.notFound"_s);
    if (m_isWrapped)
        return wording::text(u"editor.find.wrapped"_s);
    return {};
}

bool FindBar::hasNoMatch() const
{
    return m_count.total == 0 && m_count.isComplete;
}

void FindBar::showError(const std::optional<FindPatternError> &error)
{
    m_error = error;
    showState();
}

QString FindBar::errorText() const
{
    using Code = FindPatternError::Code;
    if (!m_error || m_error->code == Code::Empty)
        return {};
    if (m_error->code == Code::TooComplex)
        return wording::text(u"editor.find.tooComplex"_s);
    return wording::text(
        u"editor.find.invalidExpression"_s,
        {QString::number(m_error->offset + 1), textOfExpressionReason(m_error->reason)});
}

void FindBar::showReplaced(qint64 count)
{
    m_isReplacing = false;
    m_replaced = count;
    showState();
}

void FindBar::showReplacing(bool isReplacing)
{
    if (m_isReplacing == isReplacing && !m_replaced)
        return; // As after nearly every edit of the text.
    m_isReplacing = isReplacing;
    m_replaced.reset();
    showState();
}

QString FindBar::replacedText() const
{
    if (m_isReplacing)
        return wording::text(u"editor.find.replacing"_s);
    if (!m_replaced)
        return {};
    return wording::text(u"editor.find.replaced"_s, {QString::number(*m_replaced)});
}

/// Updates everything that depends on the state. Does nothing until the widgets exist.
void FindBar::showState()
{
    if (m_searchRow == nullptr)
        return;
    m_replaceField->setVisible(m_replaceIsShown);
    m_replaceRow->setVisible(m_replaceIsShown);
    const QString error = errorText();
    if (!error.isEmpty())
        m_errorLabel->setLine(error);
    m_errorLabel->setVisible(!error.isEmpty());
    m_replacedLabel->setLine(replacedText());
    m_countLabel->setText(countText());
    m_countLabel->setToolTip(countToolTip());
    m_countLabel->setAccessibleDescription(m_countLabel->toolTip());
    updateColors();
}

void FindBar::relabel()
{
    const QString find = wording::text(u"menu.edit.find"_s);
    const QString replace = wording::text(u"menu.edit.replace"_s);
    label(m_searchField, find, shownKey(CommandId::Find));
    label(m_replaceField, replace, shownKey(CommandId::Replace));
    label(m_replace, replace, replace, findkeys::kReplaceOne);
    const QString all = wording::text(u"editor.find.replaceAll"_s);
    label(m_replaceAll, all, all);
    label(m_next, {}, wording::text(u"editor.find.next"_s), shownKey(CommandId::FindNext));
    label(m_previous,
          {},
          wording::text(u"editor.find.previous"_s),
          shownKey(CommandId::FindPrevious));
    label(m_case,
          wording::text(u"editor.find.matchCaseFace"_s),
          wording::text(u"editor.find.matchCase"_s));
    label(m_words,
          wording::text(u"editor.find.wholeWordFace"_s),
          wording::text(u"editor.find.wholeWord"_s));
    label(m_expression,
          wording::text(u"editor.find.regularExpressionFace"_s),
          wording::text(u"editor.find.regularExpression"_s));
    label(m_wrap,
          wording::text(u"editor.find.wrapAroundFace"_s),
          wording::text(u"editor.find.wrapAround"_s));
    label(m_close, u"×"_s, wording::text(u"editor.find.close"_s), findkeys::kClose);
    showState();
}

void FindBar::updateColors()
{
    if (m_isUpdatingColors)
        return;
    m_isUpdatingColors = true;
    const QPalette &own = palette();
    const bool isDark = own.color(QPalette::Window).lightness() < 128;
    const QColor warning = isDark ? QColor(255, 138, 128) : QColor(176, 0, 32);
    QPalette warned = own;
    warned.setColor(QPalette::WindowText, warning);
    m_errorLabel->setPalette(warned);
    m_countLabel->setPalette(hasNoMatch() ? warned : own);
    for (QLineEdit *field : {m_searchField, m_replaceField})
        makePlaceholderLegible(field, own.color(QPalette::Text));
    m_isUpdatingColors = false;
}

void FindBar::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        showState();
}

void FindBar::paintEvent(QPaintEvent *event)
{
    QWidget::paintEvent(event);
    constexpr float kAlpha = 0.2F;
    QColor edge = palette().color(QPalette::WindowText);
    edge.setAlphaF(kAlpha);
    QPainter(this).fillRect(QRect(0, 0, width(), 1), edge);
}

bool FindBar::returnPressed(const QObject *field, Qt::KeyboardModifiers modifiers)
{
    const Qt::KeyboardModifiers pressed = modifiers & ~Qt::KeypadModifier;
    if (pressed != Qt::NoModifier && pressed != Qt::ShiftModifier)
        return false;
    if (pressed == Qt::ShiftModifier)
        Q_EMIT previousRequested();
    else if (field == m_replaceField)
        Q_EMIT replaceRequested();
    else
        Q_EMIT nextRequested();
    return true;
}

bool FindBar::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(object, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
    if (isReturn && returnPressed(object, key->modifiers()))
        return true;
    return QWidget::eventFilter(object, event);
}

void FindBar::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier)
        Q_EMIT closeRequested();
    else
        QWidget::keyPressEvent(event);
}

} // namespace penwick
