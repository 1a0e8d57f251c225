#include "window/Zoom.h"

#include "platform/desktop/SystemFonts.h"
#include "support/ShownTextView.h"
#include "support/TemporaryHome.h"
#include "view/EditorFont.h"

#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

using namespace penwick;
using namespace Qt::StringLiterals;

class ZoomTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keys_changeAllViewsAndAreRemembered();
    void keys_stopAtTheLimits();
    void wheel_withControl_zooms();
    void wheel_withoutControl_scrolls();
    void steps_keepTheCaretAndTheFirstLine();
    void setting_broken_isIgnored_data();
    void setting_broken_isIgnored();
};

namespace {

constexpr int kSize = 20; // At 100 %, in logical pixels.

int pixelsOf(const TextView &view)
{
    return QFontInfo(view.font()).pixelSize();
}

/// A view with a zoom.
struct Zoomed
{
    explicit Zoomed(Preferences &preferences, QStringView text = u"text")
        : shown(text)
        , zoom(&shown.view, &shown.view, kSize, preferences)
    {
        shown.view.setFont(editorFont(Zoom::pixels(kSize, preferences)));
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::ControlModifier)
    {
        shown.view.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&shown.view));
        shown.key(key, modifiers);
    }

    void turnWheel(int angle, Qt::KeyboardModifiers modifiers)
    {
        QWheelEvent event({50, 50},
                          shown.view.viewport()->mapToGlobal(QPointF(50, 50)),
                          {},
                          {0, angle},
                          Qt::NoButton,
                          modifiers,
                          Qt::NoScrollPhase,
                          false);
        QCoreApplication::sendEvent(shown.view.viewport(), &event);
    }

    test::ShownTextView shown;
    Zoom zoom;
};

/// An empty store of settings.
struct Settings
{
    test::TemporaryHome home;
    UserDefaults defaults{home.file(u"penwick.conf"_s)};
    Preferences preferences{defaults};
};

} // namespace

void ZoomTest::keys_changeAllViewsAndAreRemembered()
{
    Settings settings;
    Zoomed first(settings.preferences);
    Zoomed second(settings.preferences);
    QCOMPARE(pixelsOf(first.shown.view), 20);
    first.press(Qt::Key_Plus);
    first.press(Qt::Key_Equal);
    QCOMPARE(pixelsOf(first.shown.view), 24);
    QCOMPARE(pixelsOf(second.shown.view), 24);
    second.press(Qt::Key_Minus);
    QCOMPARE(pixelsOf(first.shown.view), 22);
    QCOMPARE(settings.defaults.string(u"zoom"_s), u"110"_s);
    const Zoomed third(settings.preferences);
    QCOMPARE(pixelsOf(third.shown.view), 22);
    first.press(Qt::Key_0);
    QCOMPARE(pixelsOf(second.shown.view), 20);
    QCOMPARE(second.shown.text(), u"text"_s);
}

void ZoomTest::keys_stopAtTheLimits()
{
    Settings settings;
    Zoomed f(settings.preferences);
    for (int i = 0; i < 30; ++i)
        f.press(Qt::Key_Plus);
    QCOMPARE(pixelsOf(f.shown.view), 60);
    QVERIFY(!f.zoom.canStep(1) && f.zoom.canStep(-1));
    for (int i = 0; i < 30; ++i)
        f.press(Qt::Key_Minus);
    QCOMPARE(pixelsOf(f.shown.view), 10);
    QVERIFY(f.zoom.canStep(1) && !f.zoom.canStep(-1));
}

void ZoomTest::wheel_withControl_zooms()
{
    Settings settings;
    Zoomed f(settings.preferences, u"line\n"_s.repeated(300));
    const int top = f.shown.view.verticalScrollBar()->value();
    f.turnWheel(120, Qt::ControlModifier);
    QCOMPARE(pixelsOf(f.shown.view), 22);
    f.turnWheel(-60, Qt::ControlModifier); // Half a step.
    QCOMPARE(pixelsOf(f.shown.view), 22);
    f.turnWheel(-60, Qt::ControlModifier);
    QCOMPARE(pixelsOf(f.shown.view), 20);
    QCOMPARE(f.shown.view.verticalScrollBar()->value(), top);
}

void ZoomTest::wheel_withoutControl_scrolls()
{
    Settings settings;
    Zoomed f(settings.preferences, u"line\n"_s.repeated(300));
    f.turnWheel(-120, Qt::NoModifier);
    QCOMPARE(pixelsOf(f.shown.view), 20);
    QVERIFY(f.shown.view.verticalScrollBar()->value() > 0);
}

void ZoomTest::steps_keepTheCaretAndTheFirstLine()
{
    Settings settings;
    QString text;
    for (int i = 0; i < 300; ++i)
        text += u"日本語の長い行 and English words, number %1 "_s.arg(i).repeated(i % 5) + u'\n';
    Zoomed f(settings.preferences, text);
    f.shown.caret(text.size() / 2);
    f.shown.view.scrollTo(text.size() / 2);
    const auto firstLine = [&] {
        constexpr int kMargin = static_cast<int>(TextViewport::kMargin);
        const qint64 offset = f.shown.view.offsetAt({kMargin, kMargin});
        return f.shown.view.string().lineFeedLineAndColumn(offset).first;
    };
    const qint64 before = firstLine();
    QVERIFY(before > 10);
    for (int i = 0; i < 6; ++i) {
        f.zoom.step(i < 3 ? 2 : -2);
        QCOMPARE(firstLine(), before);
        QCOMPARE(f.shown.view.caretOffset(), text.size() / 2);
    }
}

void ZoomTest::setting_broken_isIgnored_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("expected");
    QTest::newRow("smallest") << u"50"_s << 10;
    QTest::newRow("largest") << u"300"_s << 60;
    QTest::newRow("odd") << u"125"_s << 25;
    QTest::newRow("too small") << u"49"_s << 20;
    QTest::newRow("too large") << u"301"_s << 20;
    QTest::newRow("no number") << u"150%"_s << 20;
    QTest::newRow("empty") << QString() << 20;
}

void ZoomTest::setting_broken_isIgnored()
{
    QFETCH(const QString, value);
    QFETCH(const int, expected);
    Settings settings;
    settings.defaults.setString(u"zoom"_s, value);
    QCOMPARE(Zoom::pixels(kSize, settings.preferences), expected);
}

QTEST_MAIN(ZoomTest)
#include "ZoomTest.moc"
