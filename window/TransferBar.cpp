#include "window/TransferBar.h"

#include "controls/VerbatimText.h"
#include "platform/desktop/SystemFonts.h"
#include "platform/settings/NotificationCenter.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QStyle>
#include <QToolButton>

#include <algorithm>
#include <chrono>

namespace penwick {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto kAppearanceDelay = 200ms; // Transfers that end sooner are not shown.
constexpr auto kRefreshInterval = 100ms;
constexpr int kTrackHeight = 4;
constexpr int kTrackWidth = 220;

/// A progress bar drawn as a thin line. Qt styles draw a framed box, which is too prominent here.
class ProgressLine final : public QProgressBar
{
public:
    explicit ProgressLine(QWidget *parent)
        : QProgressBar(parent)
    {
        setRange(0, 100);
        setTextVisible(false);
        setFixedHeight(kTrackHeight);
        setMaximumWidth(kTrackWidth);
    }

    [[nodiscard]] QSize minimumSizeHint() const override { return {0, kTrackHeight}; }

    [[nodiscard]] QSize sizeHint() const override { return {kTrackWidth, kTrackHeight}; }

protected:
    void paintEvent(QPaintEvent * /*event*/) override
    {
        constexpr float kTrackAlpha = 0.18F;
        constexpr qreal kRadius = kTrackHeight / 2.0;
        QColor track = palette().color(QPalette::WindowText);
        track.setAlphaF(kTrackAlpha);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(track);
        painter.drawRoundedRect(rect(), kRadius, kRadius);
        const int filled = width() * (value() - minimum()) / std::max(1, maximum() - minimum());
        if (filled == 0)
            return;
        painter.setBrush(palette().color(QPalette::Highlight));
        painter.drawRoundedRect(
            QStyle::visualRect(layoutDirection(), rect(), QRect(0, 0, filled, height())),
            kRadius,
            kRadius);
    }
};

} // namespace

TransferBar::TransferBar(TextDocument *document, QWidget *parent)
    : QWidget(parent)
    , m_document(document)
    , m_appearance(this)
    , m_refresh(this)
{
    makeContent();
    m_appearance.setSingleShot(true);
    m_appearance.setInterval(kAppearanceDelay);
    m_refresh.setInterval(kRefreshInterval);
    connect(&m_appearance, &QTimer::timeout, this, &TransferBar::appear);
    connect(&m_refresh, &QTimer::timeout, this, &TransferBar::refresh);
    NotificationCenter::defaultCenter().addObserver(
        UIWordingProfileDidChange, this, [this] { refresh(); });
    setVisible(false);
    if (document == nullptr)
        return;
    connect(document, &TextDocument::transferStarted, this, &TransferBar::transferDidStart);
    connect(document, &TextDocument::transferEnded, this, &TransferBar::disappear);
    connect(m_cancel, &QToolButton::clicked, document, &TextDocument::cancelTransfer);
    if (document->transfer() != TextDocument::Transfer::None)
        transferDidStart();
}

void TransferBar::makeContent()
{
    constexpr int kPixels = 11; // As in the status bar.
    constexpr int kMargin = 3;  // Above and below.
    constexpr int kGap = 10;
    QFont barFont = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    setFontPixels(barFont, kPixels);
    setFont(barFont);
    setBackgroundRole(QPalette::Window);
    setAutoFillBackground(true);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    m_label = new QLabel(this);
    m_label->setObjectName(u"transferLabel"_s);
    m_label->setTextFormat(Qt::PlainText);
    m_progress = new ProgressLine(this);
    m_progress->setObjectName(u"transferProgress"_s);
    m_cancel = new QToolButton(this);
    m_cancel->setObjectName(u"transferCancel"_s);
    m_cancel->setFocusPolicy(Qt::TabFocus); // A click must leave the focus in the text.
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(kGap, kMargin, kGap, kMargin);
    layout->setSpacing(kGap);
    layout->addWidget(m_label);
    layout->addWidget(m_progress, 1);
    layout->addWidget(m_cancel);
    layout->addStretch();
}

void TransferBar::showAtOnce()
{
    if (!m_document.isNull() && m_document->transfer() != TextDocument::Transfer::None)
        appear();
}

void TransferBar::transferDidStart()
{
    m_appearance.start();
}

void TransferBar::appear()
{
    m_appearance.stop();
    // The timer may fire after the transfer has ended: another receiver of `transferEnded` may run
    // before `disappear` and show a modal dialog, which runs the event loop.
    if (m_document.isNull() || m_document->transfer() == TextDocument::Transfer::None)
        return;
    m_cancel->setEnabled(true);
    refresh();
    m_refresh.start();
    setVisible(true);
}

void TransferBar::disappear()
{
    m_appearance.stop();
    m_refresh.stop();
    if (m_cancel->hasFocus())
        focusPreviousChild(); // Return the focus to the text, from which Tab moved it here.
    setVisible(false);
}

void TransferBar::refresh()
{
    if (m_document.isNull() || m_document->transfer() == TextDocument::Transfer::None)
        return;
    const QString task = m_document->isReading() ? wording::text(u"status.loading"_s)
                                                 : wording::text(u"status.saving"_s);
    const int percent = m_document->transferPercent();
    // Reserve the largest width, so that the progress line does not move when the digits change.
    m_label->setMinimumWidth(m_label->fontMetrics().horizontalAdvance(task + u"… 99 %"_s));
    m_label->setText(task + u"… "_s + QString::number(percent) + u" %"_s);
    m_progress->setAccessibleName(task);
    m_progress->setValue(percent);
    setVerbatimText(m_cancel, wording::text(u"status.stopTransfer"_s));
    m_cancel->setAccessibleName(m_document->isReading() ? wording::text(u"status.stopLoading"_s)
                                                        : wording::text(u"status.stopSaving"_s));
}

} // namespace penwick
