// Measures what texts of unusual length or number cost the main thread, and prints one line of JSON
// with milliseconds and bytes. bench/run starts it as a separate process; see `kUsage`.

#include "app/CommandPalette.h"
#include "app/MacroMenu.h"
#include "app/MenuBar.h"
#include "bench/ShownEditor.h"
#include "command/MacroKeys.h"
#include "command/Palette.h"
#include "macro/library/MacroJson.h"
#include "macro/library/MacroManagerWindowController.h"
#include "platform/settings/UserDefaults.h"
#include "window/EditorWindow.h"
#include "window/EditorWindowController.h"
#include "window/StatusMessageLabel.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeyEvent>
#include <QListView>
#include <QMainWindow>
#include <QMenu>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <optional>

using namespace penwick;
using namespace penwick::bench;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kUsage = "usage: penwick_measure_long error|value MB\n"
                        "       penwick_measure_long macros COUNT UNITS\n"
                        "       penwick_measure_long columns LINES UNITS\n";
constexpr qsizetype kMegabyte = 1'000'000;

int print(const QJsonObject &object)
{
    std::puts(QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
    return 0;
}

/// Returns the highest memory use of this process since the last `forgetPeak`, in bytes.
double peakMemory()
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return line.simplified().split(' ').at(1).toDouble() * 1024;
    return 0;
}

void forgetPeak()
{
    QFile file(u"/proc/self/clear_refs"_s);
    if (!file.open(QIODevice::WriteOnly) || file.write("5") != 1)
        qFatal("cannot reset the peak of the memory");
}

void runUntilIdle()
{
    while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents)) {
    }
}

/// Milliseconds that `work` takes, with the events that it causes.
template <typename Work> double timeUntilIdle(Work work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    runUntilIdle();
    return milliseconds(timer);
}

/// An editor with a menu bar in a visible window.
struct Shown
{
    explicit Shown(const QTemporaryDir &folder)
        : defaults(folder.filePath(u"settings.ini"_s))
        , controller(defaults)
    {
        buildMenuBar(controller.window(), handlers);
        controller.setDocument(&document);
        controller.window()->show();
        runUntilIdle();
    }

    MenuHandlers handlers{[](CommandId) {}, [](CommandId) { return true; }};
    UserDefaults defaults;
    TextDocument document;
    EditorWindowController controller;
};

/// Measures a macro that throws its document's text, from its end to an idle event loop that shows
/// the message.
int measureError(qsizetype size)
{
    const QTemporaryDir folder;
    Shown shown(folder);
    TextView *view = shown.controller.textView();
    view->replaceText({0, 0}, Text(QString(size, u'x')));
    runUntilIdle();
    QElapsedTimer timer;
    double before = 0;
    QObject::connect(&shown.controller,
                     &EditorWindowController::macroFailed,
                     [&](const QString &, const MacroFailure &failure) {
                         if (failure.message.size() < size)
                             qFatal("%lld %s",
                                    static_cast<long long>(failure.message.size()),
                                    qPrintable(failure.message.left(99)));
                         forgetPeak();
                         before = peakMemory();
                         timer.start();
                     });
    shown.controller.runMacro(
        u"throw new Error(context.document.text)"_s, u"id"_s, u"name"_s, std::nullopt);
    pumpUntil([&timer] { return timer.isValid(); });
    const auto *message = shown.controller.window()->findChild<StatusMessageLabel *>();
    pumpUntil([message] { return message->isVisible(); });
    runUntilIdle();
    return print({{u"from the end of the macro"_s, milliseconds(timer)},
                  {u"memory"_s, peakMemory() - before}});
}

/// Measures the change to a profile with one long text, with its lookup everywhere.
int measureValue(qsizetype size)
{
    const QTemporaryDir folder;
    Shown shown(folder);
    QHash<QString, QString> values;
    for (const QString &key :
         {u"menu.file"_s, u"status.line"_s, u"editor.find.next"_s, u"app.name"_s})
        values.insert(key, QString(size, u'x'));
    const double applied = timeUntilIdle([&] {
        wording::setActiveValues(values);
        NotificationCenter::defaultCenter().post(UIWordingProfileDidChange);
        buildMenuBar(shown.controller.window(), shown.handlers);
    });
    return print({{u"apply"_s, applied}});
}

QList<Macro> macrosWithNames(int count, qsizetype length)
{
    QList<Macro> macros;
    for (int i = 0; i < count; ++i) {
        Macro macro;
        macro.id = QString::number(i);
        macro.name = u"マクロ"_s + macro.id;
        macro.name += QString(std::max<qsizetype>(0, length - macro.name.size()), u'x');
        macro.isEnabled = true;
        macro.source = u"user"_s;
        macros.append(macro);
    }
    return macros;
}

/// Measures the macro menu: filling it, opening it for the first time, and again; and the macro
/// manager: opening it, and selecting a macro.
int measureMacros(int count, qsizetype length)
{
    const QTemporaryDir folder;
    Shown shown(folder);
    const QList<Macro> macros = macrosWithNames(count, length);
    QMenu *menu = macroMenu(shown.controller.window());
    const auto fill = [&] {
        rebuildMacroMenu(menu, macros, shown.handlers, [](const QString &) {});
    };
    const auto open = [&] { menu->popup({0, 0}); };
    QJsonObject result{{u"fill the menu"_s, timeUntilIdle(fill)},
                       {u"open the menu"_s, timeUntilIdle(open)}};
    menu->hide();
    runUntilIdle();
    result[u"open the menu again"_s] = timeUntilIdle(open);
    menu->hide();
    runUntilIdle();
    result[u"fill the menu again"_s] = timeUntilIdle(fill);

    QFile file(folder.filePath(u"macros.json"_s));
    if (!file.open(QIODevice::WriteOnly) || file.write(MacroJson::write(macros)) < 0)
        return 1;
    file.close();
    MacroManager manager(folder.path(), shown.defaults);
    MacroKeys keys(shown.defaults);
    result[u"open the palette"_s] = timeUntilIdle([&] {
        EditorWindow *parent = shown.controller.window();
        new Palette(
            parent,
            {.rows = macroRows(macros, keys), .text = Text(), .run = [](const PaletteRow &) {}},
            {});
    });
    std::optional<MacroManagerWindowController> window;
    result[u"open the manager"_s] = timeUntilIdle([&] {
        window.emplace(MacroManagerView::Services{manager,
                                                  keys,
                                                  NotificationCenter::defaultCenter(),
                                                  {},
                                                  randomIds(),
                                                  [](const Macro &) {}},
                       shown.defaults);
        window->showWindow();
    });
    auto *list = window->window()->findChild<QListView *>();
    result[u"select a macro"_s] =
        timeUntilIdle([&] { list->setCurrentIndex(list->model()->index(0, 0)); });
    return print(result);
}

/// Measures keys in a rectangular selection of all lines, each of `length` units, half of them
/// full-width; each key with its paint.
int measureColumns(int count, qsizetype length)
{
    const QTemporaryDir folder;
    Shown shown(folder);
    TextView *view = shown.controller.textView();
    const QString line = u"a漢"_s.repeated(length / 2) + u'\n';
    Text text;
    for (const QString part = line.repeated(std::min(count, 1000)); count > 0; count -= 1000)
        text = text.appended(Text(count < 1000 ? line.repeated(count) : part));
    view->replaceText({0, 0}, text);
    view->setSelectedRange({0, text.size() - line.size() + 4});
    runUntilIdle();
    PaintWatch paint(view->viewport());
    const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers, const QString &units) {
        return paint.timeToPaint([&] {
            QKeyEvent event(QEvent::KeyPress, key, modifiers, units);
            QCoreApplication::sendEvent(view, &event);
            runUntilIdle();
        });
    };
    QJsonObject result{{u"select"_s, paint.timeToPaint([&] {
                            view->startColumns();
                            runUntilIdle();
                        })}};
    result[u"move"_s] = press(Qt::Key_Right, Qt::AltModifier | Qt::ShiftModifier, {});
    result[u"type over"_s] = press(Qt::Key_X, {}, u"x"_s);
    result[u"type"_s] = press(Qt::Key_X, {}, u"x"_s);
    result[u"Backspace"_s] = press(Qt::Key_Backspace, {}, {});
    result[u"undo"_s] = paint.timeToPaint([&] {
        view->undo();
        runUntilIdle();
    });
    return print(result);
}

int usage()
{
    std::fputs(kUsage, stderr);
    return 2;
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    const QString command = arguments.value(1);
    const qsizetype number = std::max<qsizetype>(1, arguments.value(2).toLongLong());
    if (command == u"error"_s && arguments.size() == 3)
        return measureError(number * kMegabyte);
    if (command == u"value"_s && arguments.size() == 3)
        return measureValue(number * kMegabyte);
    if (command == u"macros"_s && arguments.size() == 4)
        return measureMacros(static_cast<int>(number), arguments.at(3).toLongLong());
    if (command == u"columns"_s && arguments.size() == 4)
        return measureColumns(static_cast<int>(number), arguments.at(3).toLongLong());
    return usage();
}
