#include "window/TextLook.h"

#include "controls/ColorContrast.h"
#include "support/TemporaryHome.h"
#include "view/LineColors.h"
#include "view/LineNumberGutter.h"
#include "view/TextView.h"
#include "window/Zoom.h"

#include <QFontInfo>
#include <QHBoxLayout>
#include <QScrollBar>
#include <QTest>

#include <cmath>
#include <memory>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// An empty store of settings.
struct Settings
{
    test::TemporaryHome home;
    UserDefaults defaults{home.file(u"penwick.conf"_s)};
    Preferences preferences{defaults};
};

/// A shown view that follows the settings.
struct Looking
{
    explicit Looking(Preferences &preferences, QStringView text = u"one\ntwo\nthree")
        : view(&storage, TextLook::fontIn(preferences), &window)
    {
        row->setContentsMargins(0, 0, 0, 0);
        row->setSpacing(0);
        row->addWidget(&view, 1);
        zoom = std::make_unique<Zoom>(
            &view, &window, preferences.number(PreferenceId::FontSize), preferences);
        look = std::make_unique<TextLook>(&view, row, zoom.get(), &window, preferences);
        view.setString(Text(text));
        window.resize(500, 300);
        window.show();
        view.setFocus();
        const bool isActive = QTest::qWaitForWindowActive(&window);
        Q_ASSERT(isActive);
        Q_UNUSED(isActive)
    }

    [[nodiscard]] LineNumberGutter *gutter() { return window.findChild<LineNumberGutter *>(); }

    /// The colour beside the right end of a row.
    [[nodiscard]] QColor backgroundOf(qint64 offset)
    {
        const QImage image = view.viewport()->grab().toImage();
        const QPoint middle = view.caretRectAt(offset).center().toPoint();
        return image.pixelColor(image.width() - 3, middle.y());
    }

    /// The offset at the upper left corner.
    [[nodiscard]] qint64 topOffset() { return view.offsetAt({7, 7}); }

    QWidget window;
    QHBoxLayout *row = new QHBoxLayout(&window);
    TextStorage storage;
    TextView view;
    std::unique_ptr<Zoom> zoom;
    std::unique_ptr<TextLook> look;
};

QPalette darkPalette()
{
    QPalette palette(QColor(50, 50, 50));
    palette.setColor(QPalette::Base, QColor(30, 30, 30));
    palette.setColor(QPalette::Text, QColor(230, 230, 230));
    palette.setColor(QPalette::Highlight, QColor(42, 130, 218));
    return palette;
}

} // namespace

class TextLookTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void standard_hasNeither();
    void lineNumbers_switched_actInAllViewsAndAreRemembered();
    void lineNumbers_switched_keepCaretAndTopLine();
    void font_changed_actsInAllViews();
    void font_thatDoesNotExist_isIgnored();
    void lineSpacing_changed_movesTheRowsApart();
    void looks_changed_keepCaretAndTopLine();
    void currentLine_followsTheCaret();
    void currentLine_wrapped_isMarkedInAllRows();
    void currentLine_anyPalette_keepsTheTextReadable_data();
    void currentLine_anyPalette_keepsTheTextReadable();
};

void TextLookTest::standard_hasNeither()
{
    Settings settings;
    Looking f(settings.preferences);
    QVERIFY(f.gutter() == nullptr);
    QCOMPARE(f.backgroundOf(f.view.caretOffset()), f.backgroundOf(8));
    QCOMPARE(f.look->commandState(CommandId::ShowLineNumbers)->isOn, std::optional(false));
    QCOMPARE(f.look->commandState(CommandId::MarkCurrentLine)->isOn, std::optional(false));
    QVERIFY(!f.look->commandState(CommandId::Find));
    QVERIFY(!f.look->performCommand(CommandId::Find));
}

void TextLookTest::lineNumbers_switched_actInAllViewsAndAreRemembered()
{
    Settings settings;
    Looking first(settings.preferences);
    Looking second(settings.preferences);
    const int left = first.view.mapTo(&first.window, QPoint()).x();
    QVERIFY(second.look->performCommand(CommandId::ShowLineNumbers));
    QCOMPARE(first.look->commandState(CommandId::ShowLineNumbers)->isOn, std::optional(true));
    for (Looking *f : {&first, &second}) {
        QVERIFY(f->gutter() != nullptr);
        QCOMPARE(f->gutter()->accessibleName(), u"行番号"_s);
        QTRY_VERIFY(f->gutter()->isVisible());
        QTRY_COMPARE(f->view.mapTo(&f->window, QPoint()).x(), left + f->gutter()->width());
    }
    Looking later(settings.preferences);
    QVERIFY(later.gutter() != nullptr && later.gutter()->isVisible());
    QCOMPARE(settings.defaults.string(u"showsLineNumbers"_s), u"true"_s);
    first.look->performCommand(CommandId::ShowLineNumbers);
    QVERIFY(first.gutter() == nullptr && later.gutter() == nullptr);
    QTRY_COMPARE(first.view.mapTo(&first.window, QPoint()).x(), left);
}

void TextLookTest::lineNumbers_switched_keepCaretAndTopLine()
{
    Settings settings;
    Looking f(settings.preferences,
              QString(u"some words in a line "_s.repeated(9) + u'\n').repeated(300));
    f.view.setSelectedRange({190 * 150 + 3, 20});
    const qint64 line = f.view.lineAt(f.topOffset(), TextView::LineCount::LineBreaks);
    QVERIFY(line > 0);
    for (int i = 0; i < 2; ++i) {
        const int width = f.view.viewport()->width();
        f.look->performCommand(CommandId::ShowLineNumbers);
        QTRY_VERIFY(f.view.viewport()->width() != width);
        QCOMPARE(f.view.lineAt(f.topOffset(), TextView::LineCount::LineBreaks), line);
        QCOMPARE(f.view.selectedRange(), (TextRange{190 * 150 + 3, 20}));
    }
}

void TextLookTest::font_changed_actsInAllViews()
{
    Settings settings;
    Looking first(settings.preferences);
    Looking second(settings.preferences);
    QCOMPARE(first.view.font().pixelSize(), 14);
    settings.preferences.setNumber(PreferenceId::FontSize, 20);
    settings.preferences.setText(PreferenceId::FontFamily, u"DejaVu Serif"_s);
    for (Looking *f : {&first, &second}) {
        QCOMPARE(f->view.font().pixelSize(), 20);
        QCOMPARE(QFontInfo(f->view.font()).family(), u"DejaVu Serif"_s);
    }
    first.zoom->step(1);
    QCOMPARE(second.view.font().pixelSize(), 22);
    QCOMPARE(QFontInfo(second.view.font()).family(), u"DejaVu Serif"_s);
    settings.preferences.setNumber(PreferenceId::FontSize, 10);
    QCOMPARE(second.view.font().pixelSize(), 11);
    const Looking later(settings.preferences);
    QCOMPARE(later.view.font(), second.view.font());
}

void TextLookTest::font_thatDoesNotExist_isIgnored()
{
    Settings settings;
    Looking f(settings.preferences);
    const QString standard = QFontInfo(f.view.font()).family();
    settings.preferences.setText(PreferenceId::FontFamily, u"No Such Font"_s);
    QCOMPARE(QFontInfo(f.view.font()).family(), standard);
}

void TextLookTest::lineSpacing_changed_movesTheRowsApart()
{
    Settings settings;
    Looking f(settings.preferences);
    const qreal height = f.view.rowHeight();
    const qreal ascent = f.view.rowAscent();
    settings.preferences.setNumber(PreferenceId::LineSpacing, 150);
    QCOMPARE(f.view.rowHeight(), height + std::round(height / 2));
    QCOMPARE(f.view.caretRectAt(4).top() - f.view.caretRectAt(0).top(), f.view.rowHeight());
    QVERIFY(f.view.rowAscent() > ascent &&
            f.view.rowAscent() < f.view.rowHeight() - height + ascent);
    settings.preferences.reset(PreferenceId::LineSpacing);
    QCOMPARE(f.view.rowHeight(), height);
    QCOMPARE(f.view.rowAscent(), ascent);
}

void TextLookTest::looks_changed_keepCaretAndTopLine()
{
    Settings settings;
    Looking f(settings.preferences,
              QString(u"some words in a line "_s.repeated(9) + u'\n').repeated(300));
    const TextRange selection{190 * 150 + 3, 20};
    f.view.setSelectedRange(selection);
    const auto topLine = [&] {
        return f.view.lineAt(f.topOffset(), TextView::LineCount::LineBreaks);
    };
    const qint64 line = topLine();
    QVERIFY(line > 0);
    const auto isKept = [&] { return topLine() == line && f.view.selectedRange() == selection; };
    Preferences &preferences = settings.preferences;
    preferences.setNumber(PreferenceId::FontSize, 30);
    QVERIFY(isKept());
    preferences.setText(PreferenceId::FontFamily, u"DejaVu Serif"_s);
    QVERIFY(isKept());
    preferences.setNumber(PreferenceId::LineSpacing, 200);
    QVERIFY(isKept());
    preferences.setNumber(PreferenceId::FontSize, 8);
    QVERIFY(isKept());
    preferences.reset(PreferenceId::LineSpacing);
    QVERIFY(isKept());
}

void TextLookTest::currentLine_followsTheCaret()
{
    Settings settings;
    Looking f(settings.preferences);
    f.look->performCommand(CommandId::ShowLineNumbers);
    f.look->performCommand(CommandId::MarkCurrentLine);
    const QColor marked = LineColors(f.view.palette()).currentLine;
    const auto isMarked = [&](qint64 offset) { return f.backgroundOf(offset) == marked; };
    QVERIFY(isMarked(0) && !isMarked(4) && !isMarked(8));
    QTest::keyClick(&f.view, Qt::Key_Down);
    QVERIFY(!isMarked(0) && isMarked(4) && !isMarked(8));
    const QPoint place(1, f.view.caretRectAt(4).center().toPoint().y());
    QTRY_COMPARE(f.gutter()->grab().toImage().pixelColor(place), marked);
    f.look->performCommand(CommandId::MarkCurrentLine);
    QVERIFY(!isMarked(4));
    QVERIFY(f.gutter()->grab().toImage().pixelColor(place) != marked);
}

void TextLookTest::currentLine_wrapped_isMarkedInAllRows()
{
    Settings settings;
    settings.preferences.setOn(PreferenceId::MarksCurrentLine, true);
    Looking f(settings.preferences, QString(u"a\n"_s + u"word "_s.repeated(40) + u"\nb"_s));
    f.view.setSelectedRange({150, 0});
    const QColor marked = LineColors(f.view.palette()).currentLine;
    QVERIFY(f.view.caretRectAt(2).top() < f.view.caretRectAt(195).top());
    QCOMPARE(f.backgroundOf(2), marked);
    QCOMPARE(f.backgroundOf(195), marked);
    QVERIFY(f.backgroundOf(0) != marked);
    QVERIFY(f.backgroundOf(f.view.string().size()) != marked);
}

void TextLookTest::currentLine_anyPalette_keepsTheTextReadable_data()
{
    QTest::addColumn<QPalette>("palette");
    QTest::newRow("light") << QPalette(QColor(239, 239, 239));
    QTest::newRow("dark") << darkPalette();
    QPalette grey = darkPalette();
    grey.setColor(QPalette::Base, QColor(90, 90, 90));
    grey.setColor(QPalette::Highlight, Qt::white);
    QTest::newRow("little contrast") << grey;
}

void TextLookTest::currentLine_anyPalette_keepsTheTextReadable()
{
    QFETCH(const QPalette, palette);
    const LineColors colors(palette);
    const QColor base = palette.color(QPalette::Base);
    QVERIFY(contrastRatio(colors.currentLine, palette.color(QPalette::Text)) >= 4.5);
    QVERIFY(colors.currentLine != base);
    QVERIFY(contrastRatio(colors.currentLine, base) < 1.6); // Subtle.
    QVERIFY(contrastRatio(colors.lineNumber, base) >= 4.5);
}

QTEST_MAIN(TextLookTest)
#include "TextLookTest.moc"
