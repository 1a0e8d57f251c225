#include "command/Palette.h"

#include "command/PaletteDelegate.h"
#include "command/PaletteModel.h"
#include "command/ReadablePlaceholder.h"
#include "controls/ColorContrast.h"
#include "wording/WordingLookup.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QInputMethod>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QMainWindow>
#include <QPainter>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr int kWidth = 640; // In logical pixels, like the next.
constexpr int kMargin = 8;
constexpr int kFieldPadding = 6;
constexpr int kFieldIndent = 10; // With the field's own margin, its text starts where the rows do.
constexpr int kMostRows = 12;
constexpr int kScanTime = 4; // Milliseconds that a turn of the event loop may scan for.
constexpr qsizetype kMostHeadings = 2000;

PaletteRow hint(const QString &title)
{
    PaletteRow row;
    row.title = title;
    row.isEnabled = false;
    return row;
}

/// Returns the first character in its narrow form: input methods enter wide ones.
QChar modeOf(const QString &typed)
{
    return typed.left(1).normalized(QString::NormalizationForm_KC).append(u' ').front();
}

} // namespace

Palette::Palette(QWidget *window, PaletteSource source, const QString &typed)
    : QFrame(window)
    , m_source(std::move(source))
    , m_search(m_source.rows)
    , m_formerFocus(window->focusWidget())
    , m_field(new QLineEdit(typed, this))
    , m_list(new QListView(this))
    , m_model(new PaletteModel(this))
    , m_keyRow(new PaletteKeyRow(m_source.setKey, this))
    , m_timer(new QTimer(this))
{
    setObjectName(u"palette"_s);
    makeContent();
    makeKeyRow();
    connect(m_field, &QLineEdit::textChanged, this, &Palette::showRows);
    connect(m_list, &QListView::clicked, this, &Palette::run);
    connect(m_timer, &QTimer::timeout, this, &Palette::scanHeadings);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget * /*before*/, QWidget *now) {
        focusDidChange(now);
    });
    window->installEventFilter(this);
    showRows();
    show();
    raise();
    // A field keeps its selection when it loses the focus for this reason. A composition would stay
    // open, too.
    QGuiApplication::inputMethod()->commit();
    m_field->setFocus(Qt::PopupFocusReason);
}

void Palette::makeContent()
{
    const QString name = wording::text(u"command.palette"_s);
    setAccessibleName(name);
    setAutoFillBackground(true);
    m_field->setObjectName(u"paletteField"_s);
    m_field->setAccessibleName(name);
    m_field->setPlaceholderText(wording::text(u"palette.placeholder"_s));
    m_field->setFrame(false);
    m_field->setTextMargins(kFieldIndent, kFieldPadding, kFieldIndent, kFieldPadding);
    m_field->installEventFilter(this);
    m_list->setObjectName(u"paletteList"_s);
    m_list->setAccessibleName(wording::text(u"palette.list"_s));
    m_list->setFrameShape(NoFrame);
    m_list->setModel(m_model);
    m_list->setItemDelegate(new PaletteDelegate(m_list));
    m_list->setUniformItemSizes(true);
    m_list->setMinimumHeight(1); // A list of one row is lower than the default minimum.
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setEditTriggers(QListView::NoEditTriggers);
    m_list->setFocusPolicy(Qt::NoFocus);
    // So that the list tells assistive technology about its current row.
    m_list->setFocusProxy(m_field);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1); // The border.
    layout->setSpacing(1);
    layout->addWidget(m_field);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_keyRow);
    makePlaceholderReadable(m_field);
}

void Palette::makeKeyRow()
{
    connect(m_list->selectionModel(),
            &QItemSelectionModel::currentChanged,
            this,
            [this](const QModelIndex &current) {
                m_keyRow->setRow(current.isValid() ? m_model->rows().at(current.row())
                                                   : PaletteRow());
            });
    connect(m_keyRow,
            &PaletteKeyRow::keyChanged,
            this,
            [this](const QString &id, const QKeySequence &key) {
                const QString atEnd = key.toString(QKeySequence::NativeText);
                m_search.setAtEnd(id, atEnd);
                m_model->setAtEnd(id, atEnd);
            });
    connect(m_keyRow, &PaletteKeyRow::ended, this, [this] { m_field->setFocus(); });
}

void Palette::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        makePlaceholderReadable(m_field);
    QFrame::changeEvent(event);
}

Palette *Palette::openIn(const QWidget *window)
{
    for (auto *palette : window->findChildren<Palette *>(Qt::FindDirectChildrenOnly))
        if (palette->m_isOpen)
            return palette;
    return nullptr;
}

QString Palette::typed() const
{
    return m_field->text();
}

void Palette::setTyped(const QString &typed)
{
    m_field->setText(typed);
}

void Palette::setBadge(const QString &id, const QString &badge)
{
    m_search.setBadge(id, badge);
    m_model->setBadge(id, badge);
}

void Palette::dismiss()
{
    if (!std::exchange(m_isOpen, false))
        return;
    // The window's own focus: another window may have become active.
    if (isAncestorOf(parentWidget()->focusWidget()) && !m_formerFocus.isNull())
        m_formerFocus->setFocus(Qt::PopupFocusReason);
    hide();
    deleteLater();
}

void Palette::focusDidChange(QWidget *now)
{
    // Without a focus, another window is active: the focus may come back.
    if (now != nullptr && !isAncestorOf(now))
        dismiss();
}

void Palette::place()
{
    const QWidget *window = parentWidget();
    const int width = std::min(kWidth, window->width() - 2 * kMargin);
    int top = kMargin;
    if (const auto *main = qobject_cast<const QMainWindow *>(window))
        top += main->centralWidget()->y();
    const auto isMacro = [](const PaletteRow &row) { return row.kind == PaletteRow::Kind::Macro; };
    const auto &shown = m_model->rows();
    m_keyRow->setVisible(m_source.setKey && std::any_of(shown.begin(), shown.end(), isMacro));
    const int rows = std::clamp(m_model->rowCount(), 1, kMostRows);
    const int wanted = m_field->sizeHint().height() + rows * m_list->sizeHintForRow(0) + 3;
    const int keyRow = m_keyRow->isHidden() ? 0 : m_keyRow->height() + 1;
    const int height = std::min(wanted + keyRow, window->height() - top - kMargin);
    setGeometry((window->width() - width) / 2, top, width, height);
}

void Palette::showRows()
{
    const QString typed = m_field->text();
    const QChar mode = modeOf(typed);
    if (mode == u'@')
        startHeadingScan();
    else
        m_timer->stop();
    if (mode == u':')
        setRows(lineRows(typed.mid(1)));
    else if (mode == u'@')
        setRows(headingRows(typed.mid(1)));
    else if (mode == u'>')
        setRows(m_search.find(typed.mid(1), true));
    else
        setRows(m_search.find(typed));
}

void Palette::setRows(QList<PaletteRow> rows)
{
    if (rows.isEmpty())
        rows.append(hint(wording::text(u"palette.nothing"_s)));
    m_model->setRows(std::move(rows));
    place();
    if (m_model->rows().constFirst().isEnabled)
        m_list->setCurrentIndex(m_model->index(0));
    m_list->scrollToTop();
}

QList<PaletteRow> Palette::lineRows(const QString &typed) const
{
    if (!m_source.text)
        return {};
    const auto wanted = parseLinePlace(typed);
    const QString lineCount = QString::number(lineCountOf(*m_source.text));
    if (!wanted)
        return {hint(wording::text(u"palette.lineHint"_s, {lineCount}))};
    const FoundPlace found = findPlace(*wanted, *m_source.text);
    const QString line = QString::number(wanted->line);
    const QString column = QString::number(wanted->column);
    PaletteRow row;
    row.kind = PaletteRow::Kind::Place;
    row.offset = found.offset;
    row.title = wanted->column == 1 ? wording::text(u"palette.toLine"_s, {line})
                                    : wording::text(u"palette.toColumn"_s, {line, column});
    if (!found.hasLine) {
        row.title = wording::text(u"palette.toEnd"_s, {lineCount});
        row.message = wording::text(u"status.noLine"_s, {line});
    } else if (!found.hasColumn) {
        row.title = wording::text(u"palette.toLineEnd"_s, {line});
        row.message = wording::text(u"status.noColumn"_s, {line, column});
    }
    return {row};
}

QList<PaletteRow> Palette::headingRows(const QString &typed) const
{
    if (!m_source.text)
        return {};
    QList<PaletteRow> rows = m_headings.find(typed);
    if (rows.isEmpty() && m_timer->isActive())
        rows.append(hint(wording::text(u"palette.searching"_s)));
    return rows;
}

void Palette::startHeadingScan()
{
    if (!m_source.text)
        return;
    const bool isFirst = !m_scan;
    if (isFirst)
        m_scan.emplace(*m_source.text);
    if (!m_scan->isDone() && m_headingCount < kMostHeadings)
        m_timer->start(0);
    if (isFirst)
        scanHeadings();
}

void Palette::scanHeadings()
{
    QElapsedTimer time;
    time.start();
    QList<PaletteRow> found;
    while (!m_scan->isDone() && !time.hasExpired(kScanTime)) {
        for (const Heading &heading : m_scan->step()) {
            PaletteRow row;
            row.kind = PaletteRow::Kind::Place;
            row.title = heading.text;
            row.atEnd = wording::text(u"palette.line"_s, {QString::number(heading.line)});
            row.offset = heading.offset;
            found.append(row);
        }
    }
    found.resize(std::min(found.size(), kMostHeadings - m_headingCount));
    m_headings.append(found);
    m_headingCount += found.size();
    const bool isDone = m_scan->isDone() || m_headingCount >= kMostHeadings;
    if (isDone)
        m_timer->stop();
    if (!isDone && found.isEmpty())
        return;
    const int current = m_list->currentIndex().row();
    setRows(headingRows(m_field->text().mid(1)));
    if (current > 0 && current < m_model->rowCount())
        m_list->setCurrentIndex(m_model->index(current)); // The user may have moved there.
}

bool Palette::eventFilter(QObject *object, QEvent *event)
{
    if (object == parentWidget() && event->type() == QEvent::Resize)
        place();
    if (object == m_field && event->type() == QEvent::KeyPress)
        return pressed(*static_cast<QKeyEvent *>(event));
    return QFrame::eventFilter(object, event);
}

bool Palette::pressed(const QKeyEvent &event)
{
    const int page = std::max(1, m_list->height() / std::max(1, m_list->sizeHintForRow(0)) - 1);
    switch (event.key()) {
    case Qt::Key_Escape:
        dismiss();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        run(m_list->currentIndex());
        return true;
    case Qt::Key_Down:
        step(1);
        return true;
    case Qt::Key_Up:
        step(-1);
        return true;
    case Qt::Key_PageDown:
        step(page);
        return true;
    case Qt::Key_PageUp:
        step(-page);
        return true;
    case Qt::Key_K:
        return event.modifiers() == Qt::ControlModifier && !m_keyRow->isHidden() &&
               m_keyRow->record();
    case Qt::Key_Tab: // There is nothing else to go to.
    case Qt::Key_Backtab:
        return true;
    default:
        return false;
    }
}

/// Moves the current row among the enabled ones, which come first. A single step at either end goes
/// to the other one.
void Palette::step(int rows)
{
    const auto &all = m_model->rows();
    const auto count = static_cast<int>(std::count_if(
        all.cbegin(), all.cend(), [](const PaletteRow &row) { return row.isEnabled; }));
    if (count == 0)
        return;
    const int wanted = m_list->currentIndex().row() + rows;
    const bool isSingle = rows == 1 || rows == -1;
    const int row = isSingle ? (wanted + count) % count : std::clamp(wanted, 0, count - 1);
    m_list->setCurrentIndex(m_model->index(row));
}

void Palette::run(const QModelIndex &index)
{
    if (!m_isOpen || !index.flags().testFlag(Qt::ItemIsEnabled))
        return;
    const PaletteRow row = m_model->rows().at(index.row());
    const auto run = m_source.run;
    dismiss();
    const auto runRow = [run, row] { run(row); };
    QMetaObject::invokeMethod(parentWidget(), runRow, Qt::QueuedConnection);
}

void Palette::paintEvent(QPaintEvent * /*event*/)
{
    constexpr double kBorder = 0.35;
    QPainter painter(this);
    painter.setPen(
        mixedColor(palette().color(QPalette::Base), palette().color(QPalette::Text), kBorder));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    painter.fillRect(QRect(1, m_field->geometry().bottom() + 1, width() - 2, 1),
                     painter.pen().color());
}

} // namespace penwick
