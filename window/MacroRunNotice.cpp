#include "window/MacroRunNotice.h"

#include "controls/VerbatimText.h"
#include "text/CutText.h"
#include "wording/WordingLookup.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

constexpr int kSecond = 1000;
constexpr int kRefresh = 200; // Milliseconds; short enough that no second is skipped.
constexpr int kMinimumWidth = 320;

} // namespace

MacroRunNotice::MacroRunNotice(const QString &macroName,
                               const QElapsedTimer &since,
                               QWidget *window)
    : QDialog(window)
    , m_since(since)
    , m_elapsed(new QLabel(this))
{
    setWindowTitle(wording::text(u"app.name"_s));
    auto *message = new QLabel(this);
    message->setWordWrap(true);
    setVerbatimText(message,
                    wording::text(u"macro.running.message"_s, {cutText(macroName, kLongestName)}));
    setAccessibleName(message->text());
    m_elapsed->setTextFormat(Qt::PlainText);
    auto *stop = new QPushButton(this);
    setVerbatimText(stop, wording::text(u"macro.running.stop"_s));
    stop->setAutoDefault(false); // Return may be meant for the text that the user is typing.
    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(stop, QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(message);
    layout->addWidget(m_elapsed);
    layout->addWidget(buttons);
    setMinimumWidth(kMinimumWidth);
    // Not on the button: the notice appears while the user may be typing into the text.
    setFocusPolicy(Qt::StrongFocus);
    setFocus();

    auto *timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &MacroRunNotice::showElapsed);
    timer->start(kRefresh);
    showElapsed();
}

void MacroRunNotice::keyPressEvent(QKeyEvent *event)
{
    if (!event->text().isEmpty() && !event->matches(QKeySequence::Cancel))
        QApplication::beep();
    QDialog::keyPressEvent(event);
}

void MacroRunNotice::showElapsed()
{
    m_elapsed->setText(
        wording::text(u"macro.running.elapsed"_s, {QString::number(m_since.elapsed() / kSecond)}));
}

} // namespace penwick
