#include "app/MenuBar.h"
#include "app/PromptDialog.h"
#include "controls/ColorContrast.h"
#include "controls/FocusRing.h"
#include "controls/MessageBox.h"
#include "support/Macros.h"
#include "support/ShownMacroManager.h"
#include "support/ShownProfileManager.h"
#include "support/ShownSettings.h"
#include "view/TextView.h"
#include "window/EditorWindow.h"
#include "window/EditorWindowController.h"

#include <QAbstractButton>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QStyle>
#include <QStyleFactory>
#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

/// One window of the program in a state that the user can reach.
class Scene
{
public:
    Scene() = default;
    virtual ~Scene() = default;
    Q_DISABLE_COPY_MOVE(Scene)

    [[nodiscard]] virtual QWidget *window() const = 0;
};

class EditorScene final : public Scene
{
public:
    EditorScene()
    {
        m_document.setContentString(Text(u"一行目\nsecond line\r\n"_s));
        m_front.setDocument(&m_document);
        m_back.setDocument(&m_other);
        buildMenuBar(m_front.window(), {[](CommandId) {}, [](CommandId) { return true; }});
        m_front.window()->resize(700, 420);
        m_front.window()->show();
        static_cast<void>(QTest::qWaitForWindowActive(m_front.window()));
        m_front.textView()->setFocus();
        QTest::keyClick(m_front.textView(), Qt::Key_H, Qt::ControlModifier);
        auto *field = m_front.window()->findChild<QLineEdit *>(u"findField"_s);
        QTest::keyClicks(field, u"line"_s);
    }

    [[nodiscard]] QWidget *window() const override { return m_front.window(); }

private:
    TemporaryHome m_home;
    UserDefaults m_defaults{m_home.file(u"config.conf"_s)};
    TextDocument m_document;
    TextDocument m_other;
    EditorWindowController m_front{m_defaults};
    EditorWindowController m_back{m_front.window()->shared_from_this()};
};

QList<Macro> macrosOfEachKind()
{
    Macro builtIn = sampleMacro(u"A"_s, 1);
    builtIn.source = u"builtin"_s;
    builtIn.isEnabled = true;
    return {builtIn, sampleMacro(u"B"_s, 2), sampleMacro(u"C"_s, 3)};
}

/// Gives a window that was cut to the screen, which is small at a large scale, its own size.
void giveSize(QWidget *window, const QSize &size)
{
    static_cast<void>(QTest::qWaitForWindowExposed(window));
    window->resize(size);
}

class MacrosScene final : public Scene
{
public:
    MacrosScene()
    {
        giveSize(m_manager.window(), {800, 600});
        m_manager.page().clickRow(1);
    }

    [[nodiscard]] QWidget *window() const override { return m_manager.window(); }

private:
    ShownMacroManager m_manager{macrosOfEachKind()};
};

class ProfilesScene final : public Scene
{
public:
    ProfilesScene()
    {
        giveSize(m_manager.window(), {900, 650});
        m_manager.page().clickRow(0);
    }

    [[nodiscard]] QWidget *window() const override { return m_manager.window(); }

private:
    ShownProfileManager m_manager;
};

class SettingsScene final : public Scene
{
public:
    SettingsScene() { giveSize(m_settings.window(), {640, 760}); }

    [[nodiscard]] QWidget *window() const override { return m_settings.window(); }

private:
    ShownSettings m_settings{"zoom=120\ntabWidth=four\nkeepIndentation=true\n"};
};

class PromptScene final : public Scene
{
public:
    PromptScene() { m_dialog.show(); }

    [[nodiscard]] QWidget *window() const override { return &m_dialog; }

private:
    mutable PromptDialog m_dialog{u"何を？"_s, new QLineEdit(u"> "_s), nullptr};
};

class MessageScene final : public Scene
{
public:
    MessageScene()
    {
        m_box.addTextButton(u"保存"_s, QMessageBox::AcceptRole);
        m_box.addTextButton(u"キャンセル"_s, QMessageBox::RejectRole);
        m_box.show();
    }

    [[nodiscard]] QWidget *window() const override { return &m_box; }

private:
    mutable MessageBox m_box{QMessageBox::Warning, u"保存しますか？"_s, nullptr};
};

std::unique_ptr<Scene> makeScene(const QString &name)
{
    if (name == u"editor"_s)
        return std::make_unique<EditorScene>();
    if (name == u"macros"_s)
        return std::make_unique<MacrosScene>();
    if (name == u"profiles"_s)
        return std::make_unique<ProfilesScene>();
    if (name == u"settings"_s)
        return std::make_unique<SettingsScene>();
    if (name == u"message"_s)
        return std::make_unique<MessageScene>();
    return std::make_unique<PromptScene>();
}

void nameScenes()
{
    QTest::addColumn<QString>("scene");
    for (const char *name : {"editor", "macros", "profiles", "settings", "prompt", "message"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

QPalette lightPalette()
{
    return QApplication::style()->standardPalette();
}

QPalette darkPalette()
{
    QPalette palette(QColor(49, 54, 59), QColor(49, 54, 59));
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::BrightText})
        palette.setColor(role, QColor(239, 240, 241));
    palette.setColor(QPalette::Base, QColor(35, 38, 41));
    palette.setColor(QPalette::AlternateBase, QColor(45, 48, 51));
    palette.setColor(QPalette::Highlight, QColor(61, 174, 233));
    palette.setColor(QPalette::HighlightedText, QColor(20, 20, 20));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(140, 140, 140));
    return palette;
}

/// The window's picture once all pending events are processed and all animations have ended.
QImage pictureOf(QWidget *window)
{
    constexpr int kBetween = 40; // Milliseconds.
    constexpr int kMost = 50;
    QImage picture = window->grab().toImage();
    for (int i = 0; i < kMost; ++i) {
        QTest::qWait(kBetween);
        const QImage next = window->grab().toImage();
        if (next == picture)
            break;
        picture = next;
    }
    return picture;
}

QImage pictureOf(const Scene &scene)
{
    return pictureOf(scene.window());
}

/// The part of the window's picture that shows the rectangle of the window.
QImage partOf(const QImage &picture, const QRectF &frame)
{
    const qreal scale = picture.devicePixelRatio();
    const QRectF pixels(frame.topLeft() * scale, frame.size() * scale);
    return picture.copy(pixels.toAlignedRect().intersected(picture.rect()));
}

/// The part of the window's picture that shows the widget and a frame around it.
/// \param around width of the frame; by default that of a focus frame.
QImage partOf(const QImage &picture, const QWidget *widget, int around = 4)
{
    const QRectF own(widget->mapTo(widget->window(), QPoint()), widget->size());
    return partOf(picture, own.adjusted(-around, -around, around, around));
}

/// The greatest contrast of a colour in the picture to its most frequent one, the background.
/// \param share how much of the picture has that colour, at least; 0 to 1.
double inkContrast(const QImage &picture, double share = 0)
{
    QHash<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    QRgb background = 0;
    for (auto color = counts.cbegin(); color != counts.cend(); ++color)
        if (color.value() > counts.value(background))
            background = color.key();
    double greatest = 1;
    const double least = share * picture.width() * picture.height();
    for (auto color = counts.cbegin(); color != counts.cend(); ++color)
        if (color.value() > least)
            greatest = std::max(greatest, contrastRatio(color.key(), background));
    return greatest;
}

/// All widgets in `window` that Tab reaches.
QWidgetList tabStops(QWidget *window)
{
    QWidgetList stops;
    for (QWidget *widget = window->nextInFocusChain(); widget != window;
         widget = widget->nextInFocusChain()) {
        const bool takesTab = (widget->focusPolicy() & Qt::TabFocus) != 0;
        if (takesTab && widget->isVisibleTo(window) && widget->isEnabled() &&
            widget->focusProxy() == nullptr && widget->window() == window)
            stops.append(widget);
    }
    return stops;
}

QString describe(const QWidget *widget)
{
    const auto *button = qobject_cast<const QAbstractButton *>(widget);
    return QString::fromLatin1(widget->metaObject()->className()) + u' ' + widget->objectName() +
           u' ' + (button != nullptr ? button->text() : QString());
}

} // namespace

/// Tests of the appearance of whole windows.
class LookTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void palette_switchedWhileRunning_looksAsIfStartedWithIt_data() { nameScenes(); }

    void palette_switchedWhileRunning_looksAsIfStartedWithIt();
    void focus_anywhere_isVisible_data();
    void focus_anywhere_isVisible();

    void contrast_inTheManagers_isEnough_data();
    void contrast_inTheManagers_isEnough();

    void texts_ofButtonsAndLabels_areWhole_data() { nameScenes(); }

    void texts_ofButtonsAndLabels_areWhole();

private:
    std::unique_ptr<DefaultButtonFocus> m_defaultButtonFocus;
};

void LookTest::initTestCase()
{
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    m_defaultButtonFocus = std::make_unique<DefaultButtonFocus>();
    QApplication::setCursorFlashTime(0); // Carets do not blink between two pictures.
}

void LookTest::cleanup()
{
    QApplication::setPalette(lightPalette());
}

void LookTest::palette_switchedWhileRunning_looksAsIfStartedWithIt()
{
    QFETCH(const QString, scene);
    QApplication::setPalette(lightPalette());
    const auto switched = makeScene(scene);
    QVERIFY(QTest::qWaitForWindowActive(switched->window()));
    const QImage light = pictureOf(*switched);
    QApplication::setPalette(darkPalette());
    const QImage dark = pictureOf(*switched);
    QApplication::setPalette(lightPalette());
    const QImage back = pictureOf(*switched);
    switched->window()->hide();

    QApplication::setPalette(darkPalette());
    const auto started = makeScene(scene);
    QVERIFY(QTest::qWaitForWindowActive(started->window()));
    const QImage expected = pictureOf(*started);
    const bool isEqual = dark == expected;
    if (!isEqual) {
        dark.save(u"look-%1-switched.png"_s.arg(scene));
        expected.save(u"look-%1-started.png"_s.arg(scene));
    }
    QVERIFY(isEqual);
    QVERIFY(dark != light);
    QVERIFY(back == light);
}

void LookTest::focus_anywhere_isVisible_data()
{
    QTest::addColumn<QString>("scene");
    QTest::addColumn<bool>("isDark");
    for (const char *name : {"editor", "macros", "profiles", "settings", "prompt", "message"}) {
        QTest::addRow("%s, light", name) << QString::fromLatin1(name) << false;
        QTest::addRow("%s, dark", name) << QString::fromLatin1(name) << true;
    }
}

void LookTest::focus_anywhere_isVisible()
{
    QFETCH(const QString, scene);
    QFETCH(const bool, isDark);
    QApplication::setPalette(isDark ? darkPalette() : lightPalette());
    const auto shown = makeScene(scene);
    QWidget *window = shown->window();
    QVERIFY(QTest::qWaitForWindowActive(window));
    const QWidgetList stops = tabStops(window);
    QVERIFY(!stops.isEmpty());
    window->setAttribute(Qt::WA_KeyboardFocusChange); // The Tab key sets this too.
    QStringList unseen;
    for (QWidget *stop : stops) {
        for (auto *area : window->findChildren<QScrollArea *>()) // As the Tab key does.
            if (area->isAncestorOf(stop))
                area->ensureWidgetVisible(stop);
        stop->setFocus(Qt::TabFocusReason);
        const QImage with = pictureOf(*shown);
        stop->clearFocus();
        const QImage without = pictureOf(*shown);
        if (partOf(with, stop) == partOf(without, stop))
            unseen.append(describe(stop));
    }
    QVERIFY2(unseen.isEmpty(), qPrintable(unseen.join(u", "_s)));
}

void LookTest::contrast_inTheManagers_isEnough_data()
{
    QTest::addColumn<bool>("isDark");
    QTest::addColumn<bool>("isActive");
    for (const bool isDark : {false, true})
        for (const bool isActive : {true, false})
            QTest::addRow("%s, %s", isDark ? "dark" : "light", isActive ? "active" : "inactive")
                << isDark << isActive;
}

void LookTest::contrast_inTheManagers_isEnough()
{
    QFETCH(const bool, isDark);
    QFETCH(const bool, isActive);
    QApplication::setPalette(isDark ? darkPalette() : lightPalette());
    ShownProfileManager profiles;
    QWidget other;
    QVERIFY(QTest::qWaitForWindowActive(profiles.window()));
    const auto picture = [&] {
        if (!isActive) {
            other.show();
            other.activateWindow();
            static_cast<void>(QTest::qWaitForWindowActive(&other));
        }
        return pictureOf(profiles.window());
    };
    for (QLabel *label : profiles.window()->findChildren<QLabel *>())
        if (label->isVisible())
            QVERIFY2(inkContrast(partOf(picture(), label, 0)) >= 4.5, qPrintable(label->text()));
    profiles.page().clickRow(0);
    const QListView *list = profiles.page().list();
    const QImage shown = picture();
    for (const int row : {0, 1}) {
        const QRect area = list->visualRect(profiles.page().row(row));
        const QRect place(list->viewport()->mapTo(profiles.window(), area.topLeft()), area.size());
        QFont bold = list->font();
        bold.setBold(true);
        const int nameEnd =
            10 + QFontMetrics(bold).horizontalAdvance(profiles.page().names().at(row)) + 1;
        const QRect name(place.left() + 10, place.top(), nameEnd - 10, place.height());
        QVERIFY(inkContrast(partOf(shown, name)) >= 4.5);
        const QSize extent = badgeSize(list->font(), profiles.page().badge(row));
        const int top = place.top() + (place.height() - extent.height()) / 2;
        const QRect badge(QPoint(place.left() + nameEnd + 8, top), extent);
        QVERIFY(inkContrast(partOf(shown, badge.adjusted(4, 1, -4, -1))) >= 4.5);
    }
    const QRect area = list->visualRect(profiles.page().row(0));
    const QRect tick(list->viewport()->mapTo(profiles.window(), area.topRight()) -
                         QPoint(10 + 16 - 1, 0),
                     QSize(16, area.height()));
    QVERIFY(inkContrast(partOf(shown, tick), 0.1) >= 3);
    const QPushButton *apply = profiles.page().button(u"このプロファイルを適用"_s);
    QVERIFY(inkContrast(partOf(shown, apply, -4)) >= 4.5);
}

/// Also runs at other scales, see CMakeLists.txt.
void LookTest::texts_ofButtonsAndLabels_areWhole()
{
    QFETCH(const QString, scene);
    QApplication::setPalette(lightPalette());
    const auto shown = makeScene(scene);
    QVERIFY(QTest::qWaitForWindowActive(shown->window()));
    int count = 0;
    QStringList clipped;
    for (const QWidget *widget : shown->window()->findChildren<QWidget *>()) {
        const auto *button = qobject_cast<const QAbstractButton *>(widget);
        const bool hasText = (button != nullptr && !button->text().isEmpty()) ||
                             qobject_cast<const QLabel *>(widget) != nullptr;
        if (!hasText || !widget->isVisible())
            continue;
        ++count;
        const QSize least = widget->minimumSizeHint();
        if (widget->width() < least.width() || widget->height() < least.height())
            clipped.append(describe(widget));
    }
    QVERIFY(count > 1);
    QVERIFY2(clipped.isEmpty(), qPrintable(clipped.join(u", "_s)));
}

QTEST_MAIN(LookTest)

#include "LookTest.moc"
