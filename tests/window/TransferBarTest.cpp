#include "window/TransferBar.h"

#include "support/HugeText.h"
#include "support/Waits.h"
#include "window/LoadingView.h"

#include <QLabel>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <algorithm>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of the bar in a window of its own. The event loop delivers the end of a transfer, so a
/// transfer is active until a test runs the event loop.
class TransferBarTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void quickTransfer_fromStartToEnd_isNeverShown();
    void quickTransfer_endedUnderAMessage_isNeverShown();
    void longTransfer_lasting_isShownUntilItsEnd();
    void reading_shown_hasTextProgressAndNames();
    void writing_shown_hasTextProgressAndNames();
    void stopButton_clicked_cancelsTheTransfer();
    void documentGone_whileShown_isHarmless();
    void loadingView_escape_cancelsTheReading();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_folder->filePath(name); }

    void startReading() const;

    [[nodiscard]] QLabel *label() const { return m_bar->findChild<QLabel *>(u"transferLabel"_s); }

    [[nodiscard]] QProgressBar *progress() const
    {
        return m_bar->findChild<QProgressBar *>(u"transferProgress"_s);
    }

    [[nodiscard]] QToolButton *button() const
    {
        return m_bar->findChild<QToolButton *>(u"transferCancel"_s);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<TextDocument> m_document;
    std::unique_ptr<TransferBar> m_bar;
};

void TransferBarTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_document = std::make_unique<TextDocument>();
    m_bar = std::make_unique<TransferBar>(m_document.get());
}

void TransferBarTest::cleanup()
{
    m_bar.reset();
    m_document.reset();
}

void TransferBarTest::startReading() const
{
    QFile file(path(u"a.txt"_s));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("abc") == 3);
    file.close();
    m_document->startReading(file.fileName());
}

void TransferBarTest::quickTransfer_fromStartToEnd_isNeverShown()
{
    const QSignalSpy ended(m_document.get(), &TextDocument::transferEnded);
    startReading();
    // No event loop, so that the bar sees a quick transfer even on a slow machine.
    QVERIFY(m_document->waitForTransfer(std::chrono::milliseconds(test::kLongWait)).has_value());
    QCOMPARE(ended.count(), 1);
    QVERIFY(m_bar->isHidden());
    for (const QTimer *timer : m_bar->findChildren<QTimer *>())
        QVERIFY(!timer->isActive());
}

void TransferBarTest::quickTransfer_endedUnderAMessage_isNeverShown()
{
    TextDocument document;
    bool wasShown = false;
    // A message runs a nested event loop, and its slot is called before the bar's.
    connect(&document, &TextDocument::transferEnded, this, [&] {
        // The bar's timer ends while the message is shown.
        const auto timers = m_bar->findChildren<QTimer *>();
        QVERIFY(QTest::qWaitFor([&timers] {
            return std::none_of(timers.begin(), timers.end(), [](const QTimer *timer) {
                return timer->isActive();
            });
        }));
        wasShown = m_bar->isVisible();
    });
    m_bar = std::make_unique<TransferBar>(&document);
    const QSignalSpy ended(&document, &TextDocument::transferEnded);
    document.startReading(path(u"missing.txt"_s));
    QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 1, test::kLongWait);
    QVERIFY(!wasShown);
    QVERIFY(!m_bar->isVisible());
    m_bar.reset();
}

void TransferBarTest::longTransfer_lasting_isShownUntilItsEnd()
{
    m_document->setContentString(test::hugeText(3000));
    m_document->startWriting(path(u"a.txt"_s));
    QVERIFY(m_bar->isHidden());
    QTRY_VERIFY(m_bar->isVisible());
    QVERIFY(m_document->isWriting());
    QTRY_VERIFY(progress()->value() > 0);
    m_document->cancelTransfer();
    QTRY_VERIFY_WITH_TIMEOUT(m_bar->isHidden(), test::kLongWait);
    QVERIFY(!m_document->isWriting());
}

void TransferBarTest::reading_shown_hasTextProgressAndNames()
{
    startReading();
    m_bar->showAtOnce();
    QVERIFY(m_bar->isVisible());
    QVERIFY2(label()->text().startsWith(u"読み込み中… "_s), qPrintable(label()->text()));
    QVERIFY(label()->text().endsWith(u" %"_s));
    QCOMPARE(progress()->accessibleName(), u"読み込み中"_s);
    QCOMPARE(button()->text(), u"中止"_s);
    QCOMPARE(button()->accessibleName(), u"読み込みを中止"_s);
    QVERIFY(progress()->value() <= 99);
}

void TransferBarTest::writing_shown_hasTextProgressAndNames()
{
    m_document->setContentString(Text(u"abc"));
    m_document->startWriting(path(u"a.txt"_s));
    m_bar->showAtOnce();
    QVERIFY2(label()->text().startsWith(u"保存中… "_s), qPrintable(label()->text()));
    QCOMPARE(progress()->accessibleName(), u"保存中"_s);
    QCOMPARE(button()->accessibleName(), u"保存を中止"_s);
}

void TransferBarTest::stopButton_clicked_cancelsTheTransfer()
{
    std::optional<DocumentError> error;
    connect(m_document.get(),
            &TextDocument::transferEnded,
            this,
            [&](TextDocument::Transfer /*transfer*/, const std::optional<DocumentError> &e) {
                error = e;
            });
    startReading();
    m_bar->showAtOnce();
    button()->click();
    QTRY_VERIFY_WITH_TIMEOUT(error.has_value(), test::kLongWait);
    QVERIFY(error->isCancellation());
    QVERIFY(m_bar->isHidden());
}

void TransferBarTest::documentGone_whileShown_isHarmless()
{
    startReading();
    m_bar->showAtOnce();
    m_document.reset();
    button()->click();
    QCoreApplication::processEvents();
    m_bar->showAtOnce();
}

void TransferBarTest::loadingView_escape_cancelsTheReading()
{
    DocumentState state;
    LoadingView view(m_document.get(), &state);
    view.show();
    startReading();
    QTest::keyClick(&view, Qt::Key_Escape);
    QTRY_VERIFY_WITH_TIMEOUT(!m_document->isReading(), test::kLongWait);
    QVERIFY(m_document->filePath().isEmpty());
}

QTEST_MAIN(TransferBarTest)
#include "TransferBarTest.moc"
