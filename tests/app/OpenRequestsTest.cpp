#include "app/OpenRequests.h"

#include "app/HandOver.h"
#include "support/ModalAnswer.h"
#include "support/TemporaryHome.h"
#include "view/TextView.h"
#include "window/EditorWindowController.h"
#include "window/MacroRunNotice.h"

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QMessageBox>
#include <QTest>

#include <future>

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
                return penwick::handOver(request, *stream, 5s);
            });
        }

        /// Hands the request over and waits for the reply. True when the editor took it.
        [[nodiscard]] bool isTaken(const OpenRequest &request) const
        {
            auto outcome = handOver(request);
            return QTest::qWaitFor([&] { return isOver(outcome); }) && outcome.get().has_value();
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

private Q_SLOTS:

    void open_fileAtAPlace_putsTheCaretThere()
    {
        World world;
        const QString path = world.home.write(u"a.txt"_s, "one\ntwo\nthree");
        OpenRequest request;
        request.items = {itemOf(path, TextPlace{2, 3})};
        world.requests.open(request);
        QTRY_COMPARE(world.selectionIn(path), (TextRange{6, 0}));
        // The same file again while it is open.
        request.items = {itemOf(path, TextPlace{99, 99})};
        QVERIFY(world.isTaken(request));
        QTRY_COMPARE(world.selectionIn(path), (TextRange{13, 0}));
        QCOMPARE(world.documents.windowControllers().size(), 1);
    }

    void open_largeFileAtAPlace_putsTheCaretThereOnceItIsRead()
    {
        World world;
        world.documents.setTransferLimits({.directBytes = 0, .reading = 0ms});
        const QString path = world.home.write(u"a.txt"_s, "one\ntwo\nthree");
        OpenRequest request;
        request.items = {itemOf(path, TextPlace{3, 1})};
        world.requests.open(request);
        QVERIFY(world.documents.documentOfFile(path)->isReading());
        QTRY_COMPARE(world.selectionIn(path), (TextRange{8, 0}));
    }

    void open_text_isUntitledAndUnsaved()
    {
        World world;
        OpenRequest request;
        request.items = {{{}, Text(u"あ\r\n"_s), TextPlace{2, 1}}};
        QVERIFY(world.isTaken(request));
        QTRY_COMPARE(world.documents.windowControllers().size(), 1);
        const auto controller = world.documents.windowControllers().first();
        const TextDocument *document = world.documents.documentOf(controller.get());
        QVERIFY(document->filePath().isEmpty());
        QVERIFY(document->isEdited());
        QVERIFY(!document->textStorage()->canUndo()); // The text is the initial content, not an
                                                      // edit.
        QVERIFY(document->textStorage()->text() == Text(u"あ\r\n"_s));
        QTRY_COMPARE(controller->textView()->selectedRange(), (TextRange{3, 0}));
    }

    void open_untouchedUntitled_makesRoom()
    {
        World world;
        world.documents.newDocument();
        OpenRequest request;
        request.items = {{{}, Text(u"text"_s), std::nullopt}};
        QVERIFY(world.isTaken(request));
        QTRY_VERIFY(world.documents.documentOf(world.documents.windowControllers().first().get())
                        ->isEdited());
        QCOMPARE(world.documents.windowControllers().size(), 1);
    }

    void open_inANewWindow_isApart()
    {
        World world;
        OpenRequest request;
        request.items = {itemOf(world.home.write(u"a.txt"_s, "a"))};
        world.requests.open(request);
        request.newWindow = true;
        request.items = {itemOf(world.home.write(u"b.txt"_s, "b")),
                         {{}, Text(u"c"_s), std::nullopt}};
        QVERIFY(world.isTaken(request));
        QTRY_COMPARE(world.documents.windows().size(), 3);
    }

    void open_nothing_opensOnlyWhatIsAskedFor()
    {
        World world;
        QVERIFY(world.isTaken({})); // There is no window yet, so the request opens one.
        QTRY_COMPARE(world.documents.windowControllers().size(), 1);
        // An untouched document would make room for another one.
        QTest::keyClicks(world.documents.windowControllers().first()->textView(), u"x"_s);
        QVERIFY(world.isTaken({}));
        OpenRequest request;
        request.newWindow = true;
        QVERIFY(world.isTaken(request));
        // Requests are opened in their order, so the second one is done by then.
        QTRY_COMPARE(world.documents.windows().size(), 2);
        QCOMPARE(world.documents.windowControllers().size(), 2);
    }

    void wait_endsWithTheLastDocument()
    {
        World world;
        const QString first = world.home.write(u"a.txt"_s, "a");
        const QString second = world.home.write(u"b.txt"_s, "b");
        OpenRequest request;
        request.wait = true;
        request.items = {itemOf(first), itemOf(second)};
        auto outcome = world.handOver(request);
        QTRY_VERIFY(world.controllerOf(second) != nullptr);
        QVERIFY(world.documents.closeDocument(world.controllerOf(first)));
        // A later client is told about its document; the first one would have been told before.
        const QString third = world.home.write(u"c.txt"_s, "c");
        request.items = {itemOf(third)};
        auto later = world.handOver(request);
        QTRY_VERIFY(world.controllerOf(third) != nullptr);
        QVERIFY(world.documents.closeDocument(world.controllerOf(third)));
        QTRY_VERIFY(World::isOver(later));
        QVERIFY(!World::isOver(outcome));
        QVERIFY(world.documents.closeDocument(world.controllerOf(second)));
        QTRY_VERIFY(World::isOver(outcome));
        QVERIFY(outcome.get());
    }

    void wait_textThatMakesRoomForTheNextFile_endsWithThatFile()
    {
        World world;
        const QString file = world.home.write(u"a.txt"_s, "a");
        OpenRequest request;
        request.wait = true;
        request.items = {{{}, Text(), std::nullopt}, itemOf(file)};
        auto outcome = world.handOver(request);
        QTRY_VERIFY(world.controllerOf(file) != nullptr);
        QCOMPARE(world.documents.windowControllers().size(), 1);
        QVERIFY(world.documents.closeDocument(world.controllerOf(file)));
        QTRY_VERIFY(World::isOver(outcome));
        QVERIFY(outcome.get());
    }

    void wait_fileThatCannotBeOpened_failsAtOnce()
    {
        World world;
        OpenRequest request;
        request.wait = true;
        request.items = {itemOf(world.home.path())};
        const ModalAnswerer answer([](QWidget *message) { return message->close(); });
        auto outcome = world.handOver(request);
        QTRY_VERIFY(World::isOver(outcome));
        QVERIFY(answer.hasAnswered());
        QVERIFY(outcome.get().error().kind == HandOverError::Kind::NotAllOpened);
    }

    void wait_fileThatTurnsOutUnreadable_fails()
    {
        World world;
        world.documents.newDocument();
        world.documents.setTransferLimits({.directBytes = 0, .reading = 0ms});
        OpenRequest request;
        request.wait = true;
        request.items = {itemOf(world.home.write(u"a.txt"_s, "\xff\xfe"))};
        const ModalAnswerer answer([](QWidget *message) { return message->close(); });
        auto outcome = world.handOver(request);
        QTRY_VERIFY(World::isOver(outcome));
        QVERIFY(answer.hasAnswered());
        QVERIFY(outcome.get().error().kind == HandOverError::Kind::NotAllOpened);
    }

    // A macro may run until the user stops it, and blocks only its own window.
    void macro_thatDoesNotEnd_letsNobodyWait()
    {
        World world;
        const QString path = world.home.write(u"a.txt"_s, "a\n");
        world.documents.newDocument();
        const auto busy = world.documents.windowControllers().front();
        busy->runMacro(u"while (true) ;"_s, u"id"_s, u"name"_s, std::nullopt);
        QVERIFY(busy->isRunningMacro());
        QVERIFY(qobject_cast<MacroRunNotice *>(QApplication::activeModalWidget()) != nullptr);

        OpenRequest request;
        request.items = {itemOf(path)};
        QVERIFY(world.isTaken(request));
        QTRY_VERIFY(world.documents.documentOfFile(path) != nullptr);
        QVERIFY(busy->isRunningMacro());
    }

    void question_onTheScreen_letsRequestsWait()
    {
        World world;
        world.documents.newDocument();
        const QString path = world.home.write(u"a.txt"_s, "a");
        OpenRequest request;
        request.items = {itemOf(path)};
        QDialog question;
        question.setModal(true);
        question.show();
        QTRY_COMPARE(QApplication::activeModalWidget(), &question);
        QVERIFY(world.isTaken(request));
        QVERIFY(world.isTaken(request));
        QCOMPARE(world.documents.documentOfFile(path), nullptr);
        question.close();
        QTRY_VERIFY(world.controllerOf(path) != nullptr);
        QCOMPARE(world.documents.windowControllers().size(), 1);
    }

    void finish_withARequestThatWaits_opensItInstead()
    {
        World world;
        const QString path = world.home.write(u"a.txt"_s, "a");
        OpenRequest request;
        request.items = {itemOf(path)};
        {
            QDialog question;
            question.setModal(true);
            question.show();
            QTRY_COMPARE(QApplication::activeModalWidget(), &question);
            QVERIFY(world.isTaken(request));
        }
        QVERIFY(!world.requests.finish());
        QVERIFY(world.controllerOf(path) != nullptr);
        QVERIFY(QFile::exists(world.address.socket));
        QVERIFY(world.requests.finish());
        QVERIFY(!QFile::exists(world.address.socket));
    }
};

QTEST_MAIN(OpenRequestsTest)
#include "OpenRequestsTest.moc"
