// Runs one group of measurements and prints one line of JSON: the name of each case with its
// figure, in milliseconds or bytes. bench/run starts it as a separate process for every input; see
// `kUsage`.

#include "bench/Inputs.h"
#include "bench/ShownEditor.h"
#include "find/FindBar.h"
#include "find/FindController.h"
#include "find/FindReplacement.h"
#include "find/FindSession.h"
#include "find/TextFinder.h"
#include "window/TextViewRepresentable.h"

#include <QApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolButton>

#include <algorithm>
#include <cstdio>
#include <unistd.h>
#include <vector>

using namespace penwick;
using namespace penwick::bench;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kUsage = "usage: penwick_measure make ascii|japanese|oneline MB FILE\n"
                        "       penwick_measure floor|open|edit FILE\n"
                        "       penwick_measure replace|marks MATCHES\n"
                        "       penwick_measure unwrapped ascii|japanese\n"
                        "       penwick_measure empty\n";

constexpr int kTries = 21;
constexpr qint64 kLargeFile = 500'000'000; // Bytes; a larger file is saved only once.

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Returns a memory figure of this process in bytes, 0 when it is unknown.
/// \param field the line of /proc/self/status, such as "VmRSS:" (now) or "VmHWM:" (the peak).
double memory(QByteArrayView field)
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith(field.toByteArray()))
            return line.simplified().split(' ').at(1).toDouble() * 1024;
    return 0;
}

int print(const QJsonObject &object)
{
    std::puts(QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
    return 0;
}

/// Draws plain text with the toolkit's own functions on each update, only the lines that need it.
class PlainScreen final : public QWidget
{
public:
    PlainScreen()
    {
        resize(kWindowSize);
        QFont monospaced(u"monospace"_s);
        monospaced.setPixelSize(14); // As in the editor.
        setFont(monospaced);
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QPainter painter(this);
        painter.fillRect(event->rect(), palette().base());
        const int height = fontMetrics().height();
        for (int y = 0; y < this->height(); y += height) {
            const QRect line(0, y, width(), height);
            if (line.intersects(event->rect()))
                painter.drawText(line, u"The quick brown fox jumps over 日本語の文章 00000000"_s);
        }
    }
};

/// Milliseconds to paint an area of a screen of plain text, again and again.
double paintFloor(const std::function<QRect(const QWidget &)> &area)
{
    PlainScreen screen;
    PaintWatch watch(&screen);
    screen.show();
    pumpUntil([&] { return watch.hasPainted(); });
    std::vector<double> times;
    for (int i = 0; i < kTries; ++i)
        times.push_back(watch.timeToPaint([&] { screen.update(area(screen)); }));
    return median(times);
}

QRect wholeScreen(const QWidget &screen)
{
    return screen.rect();
}

QRect firstLine(const QWidget &screen)
{
    return {0, 0, screen.width(), screen.fontMetrics().height()};
}

/// Measures the lower bounds: a plain read with a UTF-8 check, a plain write with fsync, and a
/// painted screen and a painted line of text.
int measureFloor(const QString &path)
{
    QElapsedTimer timer;
    timer.start();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 1;
    const QByteArray bytes = file.readAll();
    if (!bytes.isValidUtf8())
        return 1;
    const double open = milliseconds(timer);
    QFile copy(path + u".floor"_s);
    timer.start();
    if (!copy.open(QIODevice::WriteOnly | QIODevice::Unbuffered) ||
        copy.write(bytes) != bytes.size() || ::fsync(copy.handle()) != 0)
        return 1;
    const double save = milliseconds(timer);
    copy.remove();
    return print({{u"open"_s, open},
                  {u"save"_s, save},
                  {u"screen"_s, paintFloor(wholeScreen)},
                  {u"line"_s, paintFloor(firstLine)}});
}

/// Shows and discards a first window, so that one-time costs such as loading fonts are not
/// measured.
void warmUp()
{
    ShownEditor warm;
    warm.show(Text(u"日本語 text"));
    warm.waitUntilShown();
}

int measureOpen(const QString &path)
{
    warmUp();
    ShownEditor editor;
    QElapsedTimer timer;
    timer.start();
    editor.open(path);
    pumpUntil([&] { return editor.watch->hasPainted(); });
    const double painted = milliseconds(timer);
    pumpUntil([&] { return editor.hasCounted(); });
    const double counted = milliseconds(timer);
    return print({{u"open to first paint"_s, painted},
                  {u"open to all counters"_s, counted},
                  {u"memory, open"_s, memory("VmRSS:")}});
}

int measureEmpty()
{
    warmUp();
    return print({{u"memory"_s, memory("VmRSS:")}});
}

/// Measures the time from a key press to the exact counters and to the painted character.
void measureTyping(ShownEditor &editor, QJsonObject &result)
{
    TextView *view = editor.textView();
    const qint64 size = view->string().size();
    const std::pair<QString, qint64> places[] = {
        {u"start"_s, 0}, {u"middle"_s, size / 2}, {u"end"_s, size}};
    for (const auto &[name, offset] : places) {
        view->setSelectedRange({offset, 0});
        QCoreApplication::processEvents();
        std::vector<double> counted;
        std::vector<double> painted;
        for (int i = 0; i < kTries; ++i) {
            const qint64 clusters = view->string().metrics().clusters + 1;
            painted.push_back(editor.watch->timeToPaint([&] {
                QElapsedTimer timer;
                timer.start();
                QKeyEvent press(QEvent::KeyPress, Qt::Key_X, {}, u"x"_s);
                QCoreApplication::sendEvent(view, &press);
                // Delivers only queued calls, so that no paint event is handled in between.
                while (editor.state.characterCount() != clusters)
                    QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
                counted.push_back(milliseconds(timer));
            }));
        }
        result[u"key to counters, "_s + name] = median(counted);
        result[u"key to paint, "_s + name] = median(painted);
    }
}

/// Measures scrolling by a page, to rows that were not laid out before.
void measureScrolling(ShownEditor &editor, QJsonObject &result)
{
    TextView *view = editor.textView();
    view->setSelectedRange({view->string().size() / 3, 0});
    QCoreApplication::processEvents();
    std::vector<double> painted;
    for (int i = 0; i < kTries; ++i) {
        painted.push_back(editor.watch->timeToPaint(
            [&] { view->verticalScrollBar()->triggerAction(QAbstractSlider::SliderPageStepAdd); }));
    }
    result[u"scroll a page"_s] = median(painted);
}

void replaceAll(TextView *view, const Text &replacement)
{
    view->replaceText({0, view->string().size()}, replacement);
}

void measureUndo(ShownEditor &editor, QJsonObject &result)
{
    TextView *view = editor.textView();
    std::vector<double> undone;
    for (int i = 0; i < 5; ++i) {
        const qint64 clusters = view->string().metrics().clusters;
        replaceAll(view, view->string().appended(Text(u"x")));
        pumpUntil([&] { return editor.state.characterCount() == clusters + 1; });
        QElapsedTimer timer;
        timer.start();
        view->undo();
        pumpUntil([&] { return editor.state.characterCount() == clusters; });
        undone.push_back(milliseconds(timer));
    }
    result[u"undo of a whole replacement"_s] = median(undone);
}

void measureSaving(ShownEditor &editor, QJsonObject &result)
{
    const QString copy = editor.document.filePath() + u".saved"_s;
    const bool isLarge = editor.document.contentString().metrics().utf8Bytes > kLargeFile;
    std::vector<double> times;
    for (int i = 0; i < (isLarge ? 1 : 3); ++i) {
        QFile::remove(copy);
        QElapsedTimer timer;
        timer.start();
        if (!editor.document.writeToFile(copy))
            qFatal("cannot save");
        times.push_back(milliseconds(timer));
    }
    QFile::remove(copy);
    result[u"save with fsync"_s] = median(times);
}

/// The measurements of the command `edit`, made in this order in one window with the whole file.
constexpr void (*kEdits[])(ShownEditor &, QJsonObject &) = {
    measureTyping, measureScrolling, measureUndo, measureSaving};

int measureEdits(const QString &path)
{
    warmUp();
    ShownEditor editor;
    editor.open(path);
    editor.waitUntilShown();
    QJsonObject result;
    for (const auto &measure : kEdits)
        measure(editor, result);
    result[u"memory, highest of all"_s] = memory("VmHWM:");
    return print(result);
}

/// Returns about 100 MB of `matches` lines, each of which ends with the word that is searched for.
QByteArray haystack(qsizetype matches)
{
    constexpr qsizetype kSize = 100'000'000;
    return (QByteArray(kSize / matches - 4, 'x') + "針\n").repeated(matches);
}

/// Measures replacing every match in a window until the counters are exact again, and undoing it.
/// The floor is a replacement in a byte array.
int measureReplacing(qsizetype matches)
{
    warmUp();
    QByteArray bytes = haystack(matches);
    ShownEditor editor;
    editor.show(Text::fromUtf8(bytes).value());
    editor.waitUntilShown();
    TextView *view = editor.textView();
    const TextFinder finder = TextFinder::compile({u"針"_s, false, false, false}).value();
    const qint64 before = editor.state.characterCount();
    QElapsedTimer timer;
    timer.start();
    const ReplaceAllResult result =
        replaceAllMatches(finder, FindReplacement(u"needle"_s, finder), view->string(), 0);
    const TextRange range = result.range;
    view->replaceText(range, result.replacement);
    pumpUntil([&] { return editor.state.characterCount() == before + 5 * matches; });
    const double replaced = milliseconds(timer);
    timer.start();
    view->undo();
    pumpUntil([&] { return editor.state.characterCount() == before; });
    const double undone = milliseconds(timer);
    timer.start();
    bytes.replace("針", "needle");
    return print(
        {{u"replace"_s, replaced}, {u"undo"_s, undone}, {u"floor"_s, milliseconds(timer)}});
}

/// Measures painting the area of a blinking caret in one cluster of `matches` code units, each of
/// which is marked as a match.
int measureMarks(qsizetype matches)
{
    warmUp();
    ShownEditor editor;
    editor.show(Text(u'e' + QString(matches - 1, QChar(0x0301))));
    editor.waitUntilShown();
    FindController *find = editor.view->textViewRepresentable()->findController();
    find->showFind();
    FindBar *bar = editor.view->textViewRepresentable()->findBar();
    bar->findChild<QToolButton *>(u"findRegularExpression"_s)->setChecked(true);
    bar->findChild<QLineEdit *>(u"findField"_s)->setText(u"."_s);
    FindSession *session = find->session();
    pumpUntil([&] {
        return session->count().total == matches && !session->marksIn({0, matches}).empty();
    });
    QWidget *viewport = editor.textView()->viewport();
    std::vector<double> painted;
    for (int i = 0; i < kTries; ++i)
        painted.push_back(editor.watch->timeToPaint([&] { viewport->update(0, 0, 8, 20); }));
    return print({{u"paint of a caret"_s, median(painted)}});
}

/// Measures typing in a line of 5 MB that does not wrap, and scrolling along it.
int measureUnwrapped(const QString &kind)
{
    constexpr qsizetype kSize = 5'000'000;
    warmUp();
    ShownEditor editor;
    editor.show(Text::fromUtf8(kind == u"japanese"_s ? japaneseProse(kSize).replace('\n', "。")
                                                     : oneLine(kSize))
                    .value());
    TextView *view = editor.textView();
    view->setWrapping(TextView::Wrapping::Off, 0);
    editor.waitUntilShown();
    QJsonObject result;
    measureTyping(editor, result);
    view->setSelectedRange({view->string().size() / 3, 0});
    QCoreApplication::processEvents();
    const std::pair<QString, QAbstractSlider::SliderAction> actions[] = {
        {u"scroll a step sideways"_s, QAbstractSlider::SliderSingleStepAdd},
        {u"scroll a page sideways"_s, QAbstractSlider::SliderPageStepAdd}};
    for (const auto &[name, action] : actions) {
        std::vector<double> painted;
        for (int i = 0; i < 5 * kTries; ++i)
            painted.push_back(editor.watch->timeToPaint(
                [&, action = action] { view->horizontalScrollBar()->triggerAction(action); }));
        result[name] = median(painted);
        result[name + u", slowest"_s] = *std::max_element(painted.begin(), painted.end());
    }
    return print(result);
}

int makeInput(const QStringList &arguments)
{
    const qsizetype size = arguments[3].toLongLong() * 1'000'000;
    QFile file(arguments[4]);
    if (!file.open(QIODevice::WriteOnly))
        return 1;
    const QByteArray bytes = arguments[2] == u"ascii"_s      ? asciiLines(size)
                             : arguments[2] == u"japanese"_s ? japaneseProse(size)
                                                             : oneLine(size);
    return file.write(bytes) == bytes.size() ? 0 : 1;
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
    if (command == u"make"_s && arguments.size() == 5)
        return makeInput(arguments);
    if (command == u"empty"_s)
        return measureEmpty();
    if (arguments.size() != 3)
        return usage();
    if (command == u"replace"_s)
        return measureReplacing(std::max<qsizetype>(1, arguments[2].toLongLong()));
    if (command == u"unwrapped"_s)
        return measureUnwrapped(arguments[2]);
    if (command == u"marks"_s)
        return measureMarks(std::max<qsizetype>(1, arguments[2].toLongLong()));
    if (command == u"floor"_s)
        return measureFloor(arguments[2]);
    if (command == u"open"_s)
        return measureOpen(arguments[2]);
    if (command == u"edit"_s)
        return measureEdits(arguments[2]);
    return usage();
}
