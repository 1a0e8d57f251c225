#include "window/StatusBarView.h"

#include "controls/ElidedLabel.h"
#include "controls/VerbatimText.h"
#include "platform/desktop/SystemFonts.h"
#include "platform/settings/NotificationCenter.h"
#include "window/LineEndMark.h"
#include "window/StatusMessageLabel.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QEvent>
#include <QFontDatabase>
#include <QFrame>
#include <QHBoxLayout>
#include <QPainter>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr int kFontSize = 11; // Logical pixels.
constexpr int kHorizontalMargin = 10;
constexpr int kVerticalMargin = 4;
constexpr int kDividerHeight = 12;
constexpr int kSpacing = 16; // Between the items: wider than the spaces within them.

/// A vertical line in a translucent shade of the text's colour. Qt styles draw a frame in the
/// palette's edge colours, which hardly differ from the background in a dark palette.
class Divider final : public QFrame
{
public:
    explicit Divider(QWidget *parent)
        : QFrame(parent)
    {
        setFrameStyle(static_cast<int>(QFrame::VLine) | static_cast<int>(QFrame::Plain));
        setFixedHeight(kDividerHeight);
    }

protected:
    void paintEvent(QPaintEvent * /*event*/) override
    {
        constexpr float kAlpha = 0.35F;
        QColor color = palette().color(QPalette::WindowText);
        color.setAlphaF(kAlpha);
        QPainter(this).fillRect(QRect(width() / 2, 0, 1, height()), color);
    }
};

/// Formats a number without digit grouping, independent of the locale.
QString number(qint64 value)
{
    return QString::number(value);
}

} // namespace

StatusBarView::StatusBarView(DocumentState *documentState, QWidget *parent)
    : QWidget(parent)
    , m_documentState(documentState)
{
    QFont barFont = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    setFontPixels(barFont, kFontSize);
    setFont(barFont);
    setBackgroundRole(QPalette::Window);
    setAutoFillBackground(true);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);

    m_countersRow = makeCountersRow();
    m_messageLabel = new StatusMessageLabel(this);
    m_messageLabel->setObjectName(u"statusMessage"_s);
    connect(m_messageLabel, &StatusMessageLabel::dismissed, this, &StatusBarView::dismissMessage);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(
        kHorizontalMargin, kVerticalMargin, kHorizontalMargin, kVerticalMargin);
    layout->addWidget(m_countersRow);
    layout->addWidget(m_messageLabel);

    connect(documentState, &DocumentState::didChange, this, &StatusBarView::stateDidChange);
    NotificationCenter::defaultCenter().addObserver(UIWordingProfileDidChange, this, [this] {
        m_lineEndMark->redraw();
        redraw();
    });
    m_lineEndMark->setContent(documentState->text());
    redraw();
}

QWidget *StatusBarView::makeCountersRow()
{
    auto *row = new QWidget(this);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kSpacing);
    const auto addLabel = [row, layout](const QString &objectName) {
        auto *label = new ElidedLabel(row);
        label->setObjectName(objectName);
        // Without an alignment, all labels are as high as the row and share one baseline.
        layout->addWidget(label);
        return label;
    };
    m_cursorLabel = addLabel(u"statusCursor"_s);
    m_lineCountLabel = addLabel(u"statusLineCount"_s);
    m_characterCountLabel = addLabel(u"statusCharacterCount"_s);
    layout->addStretch();
    layout->addWidget(new Divider(row), 0, Qt::AlignVCenter);
    m_encodingLabel = addLabel(u"statusEncoding"_s);
    m_newlineLabel = addLabel(u"statusNewline"_s);
    for (ElidedLabel *label : {m_encodingLabel, m_newlineLabel}) {
        // When space runs out, only the counters shrink.
        label->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    }
    m_lineEndMark = new LineEndMark(row);
    m_lineEndMark->setObjectName(u"statusLineEnds"_s);
    layout->addWidget(m_lineEndMark);
    connect(m_lineEndMark, &LineEndMark::clicked, this, [this] {
        Q_EMIT uniformLineEndsRequested(m_lineEndMark->wanted());
    });
    return row;
}

void StatusBarView::dismissMessage()
{
    if (m_documentState.isNull() || !m_documentState->macroNotificationMessage())
        return;
    m_documentState->setMacroNotificationMessage(std::nullopt);
}

void StatusBarView::stateDidChange(DocumentState::Field field)
{
    if (m_documentState.isNull())
        return;
    if (field == DocumentState::Field::MacroNotificationMessage)
        redraw();
    else if (field != DocumentState::Field::Text)
        redrawCounters();
    else // Of the text itself, the bar shows only whether its line ends differ.
        m_lineEndMark->setContent(m_documentState->text());
}

void StatusBarView::redraw()
{
    if (m_documentState.isNull())
        return;
    redrawCounters();
    const std::optional<QString> &message = m_documentState->macroNotificationMessage();
    const bool messageHadFocus = m_messageLabel->hasFocus();
    m_messageLabel->setMessage(message.value_or(QString()));
    m_countersRow->setVisible(!message.has_value());
    m_messageLabel->setVisible(message.has_value());
    if (messageHadFocus && !message.has_value())
        focusPreviousChild(); // Return the focus to the text, from which Tab moved it here.
}

void StatusBarView::redrawCounters()
{
    const QString line = wording::text(u"status.line"_s);
    const QString column = wording::text(u"status.column"_s);
    m_cursorLabel->setLine(line + u": "_s + number(m_documentState->cursorLine()) + u" "_s +
                           column + u": "_s + number(m_documentState->cursorColumn()));
    m_lineCountLabel->setLine(number(m_documentState->lineCount()) + u" "_s + line);
    m_characterCountLabel->setLine(characters(m_documentState->characterCount()));
    m_encodingLabel->setLine(m_documentState->encodingDisplay());
    m_newlineLabel->setLine(m_documentState->newlineDisplay());
}

QString StatusBarView::characters(qint64 count)
{
    return number(count) + u" "_s + wording::text(u"status.charCount"_s);
}

bool StatusBarView::event(QEvent *event)
{
    // The event of a label arrives here, too. Counting now costs nothing while the user types.
    if (event->type() == QEvent::ToolTip)
        setToolTip(m_messageLabel->isHidden() ? countersToolTip() : QString());
    return QWidget::event(event);
}

QString StatusBarView::countersToolTip() const
{
    // The counters too, because a narrow window cuts them off.
    QStringList lines;
    for (const QLabel *label : {m_cursorLabel, m_lineCountLabel, m_characterCountLabel})
        lines << label->text();
    const Text selected = m_selection ? m_selection() : Text();
    if (!selected.isEmpty())
        lines << wording::text(u"status.selection"_s, {characters(selected.metrics().clusters)});
    return verbatimToolTip(lines.join(u'\n'));
}

} // namespace penwick
