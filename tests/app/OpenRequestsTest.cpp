#include "app/OpenRequests.h"

#include "app/HandOver.h"
#include "support/ModalAnswer.h"
#include "support/TemporaryHome.h"
#include "support/Waits.h"
#include "view/TextView.h"
#include "window/EditorWindowController.h"
#include "window/MacroRunNotice.h"

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QMessageBox>
#include <QTest>

#include <future>
#include <memory>

using namespace penwick;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using test::ModalAnswerer;
using test::TemporaryHome;

using Outcome = tl::expected<void, HandOverError>;

namespace {

OpenRequest::Item itemOf(const QString &path, const std::optional<TextPlace> &place = {})
{
    return {QFile::encodeName(path), std::nullopt, place};
}

} // namespace

class OpenRequestsTest final : public QObject
{
    Q_OBJECT

private:
    /// A running editor, and clients that hand over requests through its socket.
    struct World
    {
        TemporaryHome home;
        InstanceAddress address{home.file(u"i.sock"_s), home.file(u"i.lock"_s)};
        DocumentController documents;
        OpenRequests requests{&documents, [this]() -> QWidget * {
                                  const auto all = documents.windows();
                                  return all.isEmpty() ? nullptr : all.last().get();
                              }};

        World()
        {
            QGuiApplication::setQuitOnLastWindowClosed(false);
            auto arrival = arriveAt(address, QDeadlineTimer(0));
            requests.listenAt(std::get<InstancePlace>(*std::move(arrival)));
        }

        [[nodiscard]] std::future<Outcome> handOver(const OpenRequest &request) const
        {
            return std::async(std::launch::async, [socket = address.socket, request]() -> Outcome {
                const auto stream = LocalSocket::connectTo(socket);
                if (!stream)
                    return tl::unexpected(HandOverError{});
                return penwick::handOver(
                    request, *stream, std::chrono::milliseconds(test::kLongWait));
            });
        }

        /// Hands the request over and waits for the reply. True when the editor took it.
        [[nodiscard]] bool isTaken(const OpenRequest &request) const
        {
            auto outcome = handOver(request);
            return QTest::qWaitFor([&] { return isOver(outcome); }, test::kLongWait) &&
                   outcome.get().has_value();
        }

        static bool isOver(const std::future<Outcome> &outcome)
        {
            return outcome.wait_for(0s) == std::future_status::ready;
        }

        [[nodiscard]] EditorWindowController *controllerOf(const QString &path) const
        {
            const TextDocument *document = documents.documentOfFile(path);
            for (const auto &controller : documents.windowControllers())
                if (document != nullptr && documents.documentOf(controller.get()) == document)
                    return controller.get();
            return nullptr;
        }

        [[nodiscard]] TextRange selectionIn(const QString &path) const
        {
            const auto *controller = controllerOf(path);
            const TextView *view = controller != nullptr ? controller->textView() : nullptr;
            return view != nullptr ? view->selectedRange() : TextRange{-1, -1};
        }
    };

    std::unique_ptr<World> m_world;

private Q_SLOTS:

    void init() { m_world = std::make_unique<World>(); }

    void cleanup() { m_world.reset(); }

    void open_fileAtAPlace_putsTheCaretThere()
    {
        const QString path = m_world->home.write(u"a.txt"_s, "one\ntwo\nthree");
        OpenRequest request;
        request.items = {itemOf(path, TextPlace{2, 3})};
        m_world->requests.open(request);
        QTRY_COMPARE(m_world->selectionIn(path), (TextRange{6, 0}));
        // The same file again while it is open.
        request.items = {itemOf(path, TextPlace{99, 99})};
        QVERIFY(m_world->isTaken(request));
        QTRY_COMPARE(m_world->selectionIn(path), (TextRange{13, 0}));
        QCOMPARE(m_world->documents.windowControllers().size(), 1);
    }

    void open_largeFileAtAPlace_putsTheCaretThereOnceItIsRead()
    {
        m_world->documents.setTransferLimits({.directBytes = 0, .reading = 0ms});
        const QString path = m_world->home.write(u"a.txt"_s, "one\ntwo\nthree");
        OpenRequest request;
        request.items = {itemOf(path, TextPlace{3, 1})};
        m_world->requests.open(request);
        QVERIFY(m_world->documents.documentOfFile(path)->isReading());
        QTRY_COMPARE(m_world->selectionIn(path), (TextRange{8, 0}));
    }

    void open_text_isUntitledAndUnsaved()
    {
        OpenRequest request;
        request.items = {{{}, Text(u"あ\r\n"_s), TextPlace{2, 1}}};
        QVERIFY(m_world->isTaken(request));
        QTRY_COMPARE(m_world->documents.windowControllers().size(), 1);
        const auto controller = m_world->documents.windowControllers().first();
        const TextDocument *document = m_world->documents.documentOf(controller.get());
        QVERIFY(document->filePath().isEmpty());
        QVERIFY(document->isEdited());
        QVERIFY(!document->textStorage()->canUndo()); // The text is the initial content, not an
                                                      // edit.
        QVERIFY(document->textStorage()->text() == Text(u"あ\r\n"_s));
        QTRY_COMPARE(controller->textView()->selectedRange(), (TextRange{3, 0}));
    }

    void open_untouchedUntitled_makesRoom()
    {
        m_world->documents.newDocument();
        OpenRequest request;
        request.items = {{{}, Text(u"text"_s), std::nullopt}};
        QVERIFY(m_world->isTaken(request));
        QTRY_VERIFY(
            m_world->documents.documentOf(m_world->documents.windowControllers().first().get())
                ->isEdited());
        QCOMPARE(m_world->documents.windowControllers().size(), 1);
    }

    void open_inANewWindow_isApart()
    {
        OpenRequest request;
        request.items = {itemOf(m_world->home.write(u"a.txt"_s, "a"))};
        m_world->requests.open(request);
        request.newWindow = true;
        request.items = {itemOf(m_world->home.write(u"b.txt"_s, "b")),
                         {{}, Text(u"c"_s), std::nullopt}};
        QVERIFY(m_world->isTaken(request));
        QTRY_COMPARE(m_world->documents.windows().size(), 3);
    }

    void open_nothing_opensOnlyWhatIsAskedFor()
    {
        QVERIFY(m_world->isTaken({})); // There is no window yet, so the request opens one.
        QTRY_COMPARE(m_world->documents.windowControllers().size(), 1);
        // An untouched document would make room for another one.
        QTest::keyClicks(m_world->documents.windowControllers().first()->textView(), u"x"_s);
        QVERIFY(m_world->isTaken({}));
        OpenRequest request;
        request.newWindow = true;
        QVERIFY(m_world->isTaken(request));
        // Requests are opened in their order, so the second one is done by then.
        QTRY_COMPARE(m_world->documents.windows().size(), 2);
        QCOMPARE(m_world->documents.windowControllers().size(), 2);
    }

    void wait_endsWithTheLastDocument()
    {
        const QString first = m_world->home.write(u"a.txt"_s, "a");
        const QString second = m_world->home.write(u"b.txt"_s, "b");
        OpenRequest request;
        request.wait = true;
        request.items = {itemOf(first), itemOf(second)};
        auto outcome = m_world->handOver(request);
        QTRY_VERIFY_WITH_TIMEOUT(m_world->controllerOf(second) != nullptr, test::kLongWait);
        QVERIFY(m_world->documents.closeDocument(m_world->controllerOf(first)));
        // The reply to a later client arrives; one to the first client would have arrived before.
        const QString third = m_world->home.write(u"c.txt"_s, "c");
        request.items = {itemOf(third)};
        auto later = m_world->handOver(request);
        QTRY_VERIFY_WITH_TIMEOUT(m_world->controllerOf(third) != nullptr, test::kLongWait);
        QVERIFY(m_world->documents.closeDocument(m_world->controllerOf(third)));
        QTRY_VERIFY_WITH_TIMEOUT(World::isOver(later), test::kLongWait);
        QVERIFY(!World::isOver(outcome));
        QVERIFY(m_world->documents.closeDocument(m_world->controllerOf(second)));
        QTRY_VERIFY_WITH_TIMEOUT(World::isOver(outcome), test::kLongWait);
        QVERIFY(outcome.get());
    }

    void wait_textThatMakesRoomForTheNextFile_endsWithThatFile()
    {
        const QString file = m_world->home.write(u"a.txt"_s, "a");
        OpenRequest request;
        request.wait = true;
        request.items = {{{}, Text(), std::nullopt}, itemOf(file)};
        auto outcome = m_world->handOver(request);
        QTRY_VERIFY_WITH_TIMEOUT(m_world->controllerOf(file) != nullptr, test::kLongWait);
        QCOMPARE(m_world->documents.windowControllers().size(), 1);
        QVERIFY(m_world->documents.closeDocument(m_world->controllerOf(file)));
        QTRY_VERIFY_WITH_TIMEOUT(World::isOver(outcome), test::kLongWait);
        QVERIFY(outcome.get());
    }

    void wait_fileThatCannotBeOpened_failsAtOnce()
    {
        OpenRequest request;
        request.wait = true;
        request.items = {itemOf(m_world->home.path())};
        const ModalAnswerer answer([](QWidget *message) { return message->close(); });
        auto outcome = m_world->handOver(request);
        QTRY_VERIFY_WITH_TIMEOUT(World::isOver(outcome), test::kLongWait);
        QVERIFY(answer.hasAnswered());
        QVERIFY(outcome.get().error().kind == HandOverError::Kind::NotAllOpened);
    }

    // The message stays open until the reply has arrived.
    void open_fileThatCannotBeOpened_isRepliedBeforeTheMessageIsClosed()
    {
        OpenRequest request;
        request.items = {itemOf(m_world->home.path()),
                         itemOf(m_world->home.write(u"a.txt"_s, "a"))};
        auto outcome = m_world->handOver(request);
        const ModalAnswerer answer(
            [&](QWidget *message) { return World::isOver(outcome) && message->close(); });
        QTRY_VERIFY(answer.hasAnswered());
        const Outcome reply = outcome.get();
        QVERIFY(!reply && reply.error().kind == HandOverError::Kind::NotAllOpened);
        QTRY_VERIFY(m_world->controllerOf(m_world->home.file(u"a.txt"_s)) != nullptr);
    }

    void open_missingFolder_isToldAtOnce()
    {
        OpenRequest request;
        request.items = {itemOf(m_world->home.file(u"none/a.txt"_s))};
        QString reason;
        test::answerModal([&reason](QWidget *message) {
            reason = qobject_cast<QMessageBox *>(message)->informativeText();
            message->close();
        });
        QVERIFY(!m_world->requests.open(request));
        QVERIFY2(reason.endsWith(u"\nフォルダが見つかりません。"_s), qPrintable(reason));
        QVERIFY(!m_world->documents.hasDocuments());
    }

    void wait_fileThatTurnsOutUnreadable_fails()
    {
        m_world->documents.newDocument();
        m_world->documents.setTransferLimits({.directBytes = 0, .reading = 0ms});
        OpenRequest request;
        request.wait = true;
        request.items = {itemOf(m_world->home.write(u"a.txt"_s, "\xff\xfe"))};
        const ModalAnswerer answer([](QWidget *message) { return message->close(); });
        auto outcome = m_world->handOver(request);
        QTRY_VERIFY_WITH_TIMEOUT(World::isOver(outcome), test::kLongWait);
        QVERIFY(answer.hasAnswered());
        QVERIFY(outcome.get().error().kind == HandOverError::Kind::NotAllOpened);
    }

    // A macro may run until the user stops it, and blocks only its own window.
    void macro_thatDoesNotEnd_delaysNoRequest()
    {
        const QString path = m_world->home.write(u"a.txt"_s, "a\n");
        m_world->documents.newDocument();
        const auto busy = m_world->documents.windowControllers().front();
        busy->runMacro(u"while (true) ;"_s, u"id"_s, u"name"_s, std::nullopt);
        QVERIFY(busy->isRunningMacro());
        QVERIFY(qobject_cast<MacroRunNotice *>(QApplication::activeModalWidget()) != nullptr);

        OpenRequest request;
        request.items = {itemOf(path)};
        QVERIFY(m_world->isTaken(request));
        QTRY_VERIFY(m_world->documents.documentOfFile(path) != nullptr);
        QVERIFY(busy->isRunningMacro());
    }

    void question_open_delaysRequests()
    {
        m_world->documents.newDocument();
        const QString path = m_world->home.write(u"a.txt"_s, "a");
        OpenRequest request;
        request.items = {itemOf(path)};
        QDialog question;
        question.setModal(true);
        question.show();
        QTRY_COMPARE(QApplication::activeModalWidget(), &question);
        QVERIFY(m_world->isTaken(request));
        QVERIFY(m_world->isTaken(request));
        QCOMPARE(m_world->documents.documentOfFile(path), nullptr);
        question.close();
        QTRY_VERIFY_WITH_TIMEOUT(m_world->controllerOf(path) != nullptr, test::kLongWait);
        QCOMPARE(m_world->documents.windowControllers().size(), 1);
    }

    void finish_withARequestThatWaits_opensItInstead()
    {
        const QString path = m_world->home.write(u"a.txt"_s, "a");
        OpenRequest request;
        request.items = {itemOf(path)};
        {
            QDialog question;
            question.setModal(true);
            question.show();
            QTRY_COMPARE(QApplication::activeModalWidget(), &question);
            QVERIFY(m_world->isTaken(request));
        }
        QVERIFY(!m_world->requests.finish());
        QVERIFY(m_world->controllerOf(path) != nullptr);
        QVERIFY(QFile::exists(m_world->address.socket));
        QVERIFY(m_world->requests.finish());
        QVERIFY(!QFile::exists(m_world->address.socket));
    }
};

QTEST_MAIN(OpenRequestsTest)
#include "OpenRequestsTest.moc"
