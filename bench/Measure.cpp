// Measures one thing in a process of its own and prints it as one line of JSON. bench/run calls it
// for every case and input; see `kUsage`.

#include "bench/Inputs.h"
#include "editor/DocumentState.h"
#include "editor/MainEditorView.h"
#include "editor/TextDocument.h"
#include "editor/TextView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeyEvent>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <optional>
#include <vector>

using namespace penwick;

namespace {

constexpr auto kUsage = "usage: penwick_measure make ascii|japanese|oneline MB FILE\n"
                        "       penwick_measure floor|open|type|undo FILE\n"
                        "       penwick_measure empty\n";

constexpr int kRuns = 5;

double milliseconds(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Resident memory of this process in bytes: now, or at its highest.
double memory(QByteArrayView field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(field.toByteArray()))
            return line.simplified().split(' ').at(1).toDouble() * 1024;
    }
    return 0;
}

void print(const QJsonObject &object)
{
    std::puts(QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
}

/// Waits for the view's first paint.
class PaintWatch final : public QObject
{
public:
    explicit PaintWatch(QWidget *widget) { widget->installEventFilter(this); }

    bool eventFilter(QObject *object, QEvent *event) override
    {
        const bool isPaint = event->type() == QEvent::Paint;
        if (isPaint && !m_isBusy) {
            m_isBusy = true;
            // The widget paints when the filter has let the event through; send it here instead,
            // so that the paint is over when it counts as seen.
            QCoreApplication::sendEvent(object, event);
            m_isBusy = false;
            m_hasPainted = true;
            return true;
        }
        return false;
    }

    [[nodiscard]] bool hasPainted() const { return m_hasPainted; }

    void reset() { m_hasPainted = false; }

private:
    bool m_isBusy = false;
    bool m_hasPainted = false;
};

/// A document in a shown window, the way the application shows one.
class Editor final
{
public:
    void open(const QString &path)
    {
        if (!document.readFromFile(path))
            qFatal("cannot read the input");
        state.setText(document.contentString());
        view.emplace(&state, &document);
        view->resize(900, 650);
        watch.emplace(view->textView()->viewport());
        view->show();
    }

    void pumpUntil(const std::function<bool()> &condition)
    {
        while (!condition())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    void waitUntilShown()
    {
        const qint64 clusters = document.contentString().metrics().clusters;
        pumpUntil([&] { return watch->hasPainted() && state.characterCount() == clusters; });
    }

    DocumentState state;
    TextDocument document;
    std::optional<MainEditorView> view;
    std::optional<PaintWatch> watch;
};

/// A plain read and a check of the same bytes: what no editor can be faster than.
int measureFloor(const QString &path)
{
    std::vector<double> times;
    for (int run = 0; run < kRuns; ++run) {
        QElapsedTimer timer;
        timer.start();
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return 1;
        const QByteArray bytes = file.readAll();
        if (!bytes.isValidUtf8())
            return 1;
        times.push_back(milliseconds(timer));
    }
    print({{QStringLiteral("open"), median(times)}});
    return 0;
}

int measureOpen(const QString &path)
{
    // The first window of a process pays for fonts and the like, which is no matter of the text.
    {
        Editor warm;
        warm.state.setText(Text(u"日本語 text"));
        warm.view.emplace(&warm.state, &warm.document);
        warm.view->resize(900, 650);
        warm.watch.emplace(warm.view->textView()->viewport());
        warm.view->show();
        warm.pumpUntil([&] { return warm.watch->hasPainted(); });
    }
    Editor editor;
    QElapsedTimer timer;
    timer.start();
    editor.open(path);
    editor.waitUntilShown();
    print({{QStringLiteral("open"), milliseconds(timer)},
           {QStringLiteral("memory"), memory("VmRSS:")},
           {QStringLiteral("peak"), memory("VmHWM:")}});
    return 0;
}

int measureEmpty()
{
    Editor editor;
    editor.state.setText(Text(u"日本語 text"));
    editor.view.emplace(&editor.state, &editor.document);
    editor.view->resize(900, 650);
    editor.watch.emplace(editor.view->textView()->viewport());
    editor.view->show();
    editor.pumpUntil([&] { return editor.watch->hasPainted(); });
    print({{QStringLiteral("memory"), memory("VmRSS:")}});
    return 0;
}

/// From a key press to the four exact counters, and on to the painted character.
int measureTyping(const QString &path)
{
    Editor editor;
    editor.open(path);
    editor.waitUntilShown();
    TextView *view = editor.view->textView();
    const qint64 size = view->string().size();
    QJsonObject result;
    const std::pair<QString, qint64> places[] = {{QStringLiteral("start"), 0},
                                                 {QStringLiteral("middle"), size / 2},
                                                 {QStringLiteral("end"), size}};
    for (const auto &[name, offset] : places) {
        view->setSelectedRange({offset, 0});
        QCoreApplication::processEvents();
        std::vector<double> counted;
        std::vector<double> painted;
        for (int run = 0; run < 21; ++run) {
            const qint64 clusters = view->string().metrics().clusters + 1;
            editor.watch->reset();
            QElapsedTimer timer;
            timer.start();
            QKeyEvent press(QEvent::KeyPress, Qt::Key_X, {}, QStringLiteral("x"));
            QCoreApplication::sendEvent(view, &press);
            // Only what is queued, so that no paint comes in between.
            while (editor.state.characterCount() != clusters)
                QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
            counted.push_back(milliseconds(timer));
            editor.pumpUntil([&] { return editor.watch->hasPainted(); });
            painted.push_back(milliseconds(timer));
        }
        result[QStringLiteral("key to counters, ") + name] = median(counted);
        result[QStringLiteral("key to paint, ") + name] = median(painted);
    }
    print(result);
    return 0;
}

int measureUndo(const QString &path)
{
    Editor editor;
    editor.open(path);
    editor.waitUntilShown();
    TextView *view = editor.view->textView();
    const Text replacement = view->string().appended(Text(u"x"));
    std::vector<double> undone;
    for (int run = 0; run < kRuns; ++run) {
        const TextRange all{0, view->string().size()};
        view->shouldChangeText(all, replacement);
        view->replaceCharacters(all, replacement);
        view->didChangeText();
        QCoreApplication::processEvents();
        const qint64 clusters = replacement.metrics().clusters - 1;
        QElapsedTimer timer;
        timer.start();
        view->undo();
        editor.pumpUntil([&] { return editor.state.characterCount() == clusters; });
        undone.push_back(milliseconds(timer));
    }
    print({{QStringLiteral("undo of a whole replacement"), median(undone)}});
    return 0;
}

int makeInput(const QStringList &arguments)
{
    const qsizetype size = arguments[3].toLongLong() * 1'000'000;
    QFile file(arguments[4]);
    if (!file.open(QIODevice::WriteOnly))
        return 1;
    const QByteArray bytes = arguments[2] == QLatin1String("ascii") ? bench::asciiLines(size)
                             : arguments[2] == QLatin1String("japanese")
                                 ? bench::japaneseProse(size)
                                 : bench::oneLine(size);
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
    if (command == QLatin1String("make") && arguments.size() == 5)
        return makeInput(arguments);
    if (command == QLatin1String("empty"))
        return measureEmpty();
    if (arguments.size() != 3)
        return usage();
    if (command == QLatin1String("floor"))
        return measureFloor(arguments[2]);
    if (command == QLatin1String("open"))
        return measureOpen(arguments[2]);
    if (command == QLatin1String("type"))
        return measureTyping(arguments[2]);
    if (command == QLatin1String("undo"))
        return measureUndo(arguments[2]);
    return usage();
}
