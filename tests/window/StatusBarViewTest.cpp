#include "window/StatusBarView.h"

#include "platform/settings/NotificationCenter.h"
#include "support/CutStart.h"
#include "text/CutText.h"
#include "window/StatusMessageLabel.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFrame>
#include <QLayout>
#include <QMenu>
#include <QTest>
#include <QTextDocument>

using namespace penwick;
using namespace Qt::StringLiterals;

class StatusBarViewTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void counters_initialState_showsAllItemsInOrder();
    void counters_largeNumbers_areNotGrouped();
    void counters_otherWording_relabelOnRedraw();
    void counters_profileChange_relabelAtOnce();
    void message_present_hidesCounters();
    void message_clicked_bringsCurrentCountersBack();
    void message_pressActionOrKey_dismisses();
    void message_withLineBreaks_showsOneLine();
    void message_withMarkup_showsItVerbatim();
    void message_tooLong_isElidedAndLeavesWidthFree();
    void message_long_isInItsToolTip_data();
    void message_long_isInItsToolTip();
    void message_huge_isCutForEveryReader();
    void message_contextMenu_copiesIt();
    void message_pointedAt_showsAHand();
    void counters_standApart();
    void bar_look_followsItsMeasures();
    void counters_ofDifferentScripts_shareOneBaseline();
    void bar_narrow_keepsItsItemsApart();
    void bar_darkPalette_isLegible();

private:
    [[nodiscard]] QLabel *label(const char *name) const
    {
        return m_bar->findChild<QLabel *>(QString::fromLatin1(name));
    }

    [[nodiscard]] StatusMessageLabel *message() const
    {
        return m_bar->findChild<StatusMessageLabel *>();
    }

    [[nodiscard]] QStringList visibleTexts() const;

    std::unique_ptr<DocumentState> m_state;
    std::unique_ptr<StatusBarView> m_bar;
};

void StatusBarViewTest::init()
{
    m_state = std::make_unique<DocumentState>();
    m_bar = std::make_unique<StatusBarView>(m_state.get());
    m_bar->resize(600, m_bar->sizeHint().height());
    m_bar->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_bar.get()));
}

void StatusBarViewTest::cleanup()
{
    m_bar.reset();
    m_state.reset();
    wording::setActiveValues(std::nullopt);
}

QStringList StatusBarViewTest::visibleTexts() const
{
    QList<QLabel *> labels = m_bar->findChildren<QLabel *>();
    labels.removeIf([](const QLabel *label) { return !label->isVisible(); });
    const auto left = [this](const QLabel *label) {
        return label->mapTo(m_bar.get(), QPoint()).x();
    };
    std::sort(labels.begin(), labels.end(), [&left](const QLabel *a, const QLabel *b) {
        return left(a) < left(b);
    });
    QStringList texts;
    for (const QLabel *label : std::as_const(labels))
        texts << label->text();
    return texts;
}

void StatusBarViewTest::counters_initialState_showsAllItemsInOrder()
{
    const QStringList expected{u"行: 1 列: 1"_s, u"1 行"_s, u"0 文字"_s, u"UTF-8"_s, u"LF"_s};
    QCOMPARE(visibleTexts(), expected);
    m_state->setCursorLine(12);
    m_state->setCursorColumn(0);
    QCOMPARE(label("statusCursor")->text(), u"行: 12 列: 0"_s);
}

void StatusBarViewTest::counters_largeNumbers_areNotGrouped()
{
    m_state->setCharacterCount(9'876'543'210);
    QCOMPARE(label("statusCharacterCount")->text(), u"9876543210 文字"_s);
}

void StatusBarViewTest::counters_otherWording_relabelOnRedraw()
{
    wording::setActiveValues(QHash<QString, QString>{{u"status.line"_s, u"Line"_s},
                                                     {u"status.column"_s, u"Col"_s},
                                                     {u"status.charCount"_s, u"chars"_s}});
    m_state->setLineCount(3);
    const QStringList expected{u"Line: 1 Col: 1"_s, u"3 Line"_s, u"0 chars"_s, u"UTF-8"_s, u"LF"_s};
    QCOMPARE(visibleTexts(), expected);
}

void StatusBarViewTest::counters_profileChange_relabelAtOnce()
{
    wording::setActiveValues(QHash<QString, QString>{{u"status.charCount"_s, u"chars"_s}});
    NotificationCenter::defaultCenter().post(UIWordingProfileDidChange);
    QCOMPARE(label("statusCharacterCount")->text(), u"0 chars"_s);
}

void StatusBarViewTest::message_present_hidesCounters()
{
    m_state->setMacroNotificationMessage(u"完了"_s);
    QCOMPARE(visibleTexts(), QStringList{u"完了"_s});
    m_state->setMacroNotificationMessage(QString());
    QCOMPARE(visibleTexts(), QStringList{QString()});
}

void StatusBarViewTest::message_clicked_bringsCurrentCountersBack()
{
    m_state->setMacroNotificationMessage(u"完了"_s);
    m_state->setCharacterCount(7);
    QTest::mouseClick(message(), Qt::LeftButton);
    QVERIFY(!m_state->macroNotificationMessage().has_value());
    QVERIFY(!message()->isVisible());
    QVERIFY(visibleTexts().contains(u"7 文字"_s));
}

void StatusBarViewTest::message_pressActionOrKey_dismisses()
{
    m_state->setMacroNotificationMessage(u"完了"_s);
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(message());
    QVERIFY(interface != nullptr);
    QCOMPARE(interface->text(QAccessible::Name), u"完了"_s);
    QVERIFY(interface->actionInterface() != nullptr);
    QVERIFY(interface->actionInterface()->actionNames().contains(
        QAccessibleActionInterface::pressAction()));
    interface->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QVERIFY(!m_state->macroNotificationMessage().has_value());

    m_state->setMacroNotificationMessage(u"もう一度"_s);
    QTest::keyClick(message(), Qt::Key_Space);
    QVERIFY(!m_state->macroNotificationMessage().has_value());
}

void StatusBarViewTest::message_withLineBreaks_showsOneLine()
{
    m_state->setMacroNotificationMessage(u"one\r\ntwo\nthree\u2028four"_s);
    QCOMPARE(message()->text(), u"one two three four"_s);
}

void StatusBarViewTest::message_withMarkup_showsItVerbatim()
{
    m_state->setMacroNotificationMessage(u"<b>x</b> & y"_s);
    QCOMPARE(message()->displayedText(), u"<b>x</b> & y"_s);
    QCOMPARE(message()->textFormat(), Qt::PlainText);
}

void StatusBarViewTest::message_tooLong_isElidedAndLeavesWidthFree()
{
    m_state->setMacroNotificationMessage(QString(5000, u'あ'));
    QVERIFY(m_bar->minimumSizeHint().width() < 300);
    m_bar->resize(400, m_bar->height());
    QTRY_VERIFY(message()->width() <= 400);
    QVERIFY(message()->displayedText().endsWith(u'…'));
    QVERIFY(message()->displayedText().startsWith(u'あ'));
}

void StatusBarViewTest::message_long_isInItsToolTip_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("expected");
    const QString emoji = u"\U0001F600"_s;
    QTest::newRow("short") << u"完了"_s << u"完了"_s;
    QTest::newRow("markup and lines") << u"<b>a</b> & b\r\nc"_s << u"<b>a</b> & b\nc"_s;
    QTest::newRow("long") << QString(5000, u'あ') << QString(4000, u'あ') + u'…';
    QTest::newRow("pair at the end")
        << u"a"_s + emoji.repeated(2000) << u"a"_s + emoji.repeated(1999) + u'…';
    QTest::newRow("many lines") << u"x\n"_s.repeated(500) << u"x\n"_s.repeated(29) + u"x…"_s;
}

void StatusBarViewTest::message_long_isInItsToolTip()
{
    QFETCH(const QString, message);
    QFETCH(const QString, expected);
    m_state->setMacroNotificationMessage(message);
    QTextDocument document;
    document.setHtml(this->message()->toolTip());
    QCOMPARE(document.toPlainText(), expected);
}

void StatusBarViewTest::message_huge_isCutForEveryReader()
{
    const QString text = test::hugeText();
    m_state->setMacroNotificationMessage(text);
    QVERIFY(test::isCutStart(message()->text(), text, kLongestShown));
    const auto *told = QAccessible::queryAccessibleInterface(message());
    QVERIFY(test::isCutStart(told->text(QAccessible::Name), text, kLongestShown));
    QVERIFY(told->text(QAccessible::Description).size() < 2 * kLongestToolTip);
    message()->copy();
    QCOMPARE(QGuiApplication::clipboard()->text(), text);
}

void StatusBarViewTest::message_contextMenu_copiesIt()
{
    const QString text = u"one\ntwo "_s + QString(5000, u'あ');
    m_state->setMacroNotificationMessage(text);
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {}, Qt::NoModifier);
    QCoreApplication::sendEvent(message(), &event);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    QVERIFY(menu != nullptr);
    QCOMPARE(menu->actions().size(), 1);
    QCOMPARE(menu->actions().first()->text(), u"コピー\tCtrl+C"_s);
    menu->actions().first()->trigger();
    menu->close();
    QCOMPARE(QGuiApplication::clipboard()->text(), text);
    QVERIFY(m_state->macroNotificationMessage().has_value());
}

void StatusBarViewTest::message_pointedAt_showsAHand()
{
    m_state->setMacroNotificationMessage(u"完了"_s);
    QCOMPARE(message()->cursor().shape(), Qt::PointingHandCursor);
}

// The space between two items is clearly wider than a space within one.
void StatusBarViewTest::counters_standApart()
{
    const int space = label("statusCursor")->fontMetrics().horizontalAdvance(u' ');
    QTRY_VERIFY(label("statusNewline")->width() > 0);
    int right = -100;
    for (const char *name : {"statusCursor",
                             "statusLineCount",
                             "statusCharacterCount",
                             "statusEncoding",
                             "statusNewline"}) {
        const QRect place = label(name)->geometry();
        QVERIFY2(place.left() - right > 3 * space, name);
        right = place.right();
    }
}

void StatusBarViewTest::bar_look_followsItsMeasures()
{
    QCOMPARE(m_bar->layout()->contentsMargins(), QMargins(10, 4, 10, 4));
    QCOMPARE(label("statusCursor")->font().pixelSize(), 11);
    QVERIFY(m_bar->autoFillBackground());
    QCOMPARE(m_bar->backgroundRole(), QPalette::Window);
    bool dividerFound = false;
    for (const QFrame *frame : m_bar->findChildren<QFrame *>()) {
        dividerFound =
            dividerFound || (frame->frameShape() == QFrame::VLine && frame->height() == 12);
    }
    QVERIFY(dividerFound);
}

// The text of each label has the same distance from the label's top, whatever fonts it uses.
void StatusBarViewTest::counters_ofDifferentScripts_shareOneBaseline()
{
    const QLabel *first = label("statusCursor");
    for (const char *name :
         {"statusLineCount", "statusCharacterCount", "statusEncoding", "statusNewline"}) {
        QCOMPARE(label(name)->y(), first->y());
        QCOMPARE(label(name)->height(), first->height());
    }
}

void StatusBarViewTest::bar_narrow_keepsItsItemsApart()
{
    m_state->setCursorLine(9'223'372'036'854'775'807);
    m_state->setCursorColumn(9'223'372'036'854'775'807);
    m_state->setLineCount(9'223'372'036'854'775'807);
    m_state->setCharacterCount(9'223'372'036'854'775'807);
    m_bar->resize(520, m_bar->height());
    QCOMPARE(m_bar->width(), 520);
    QTRY_VERIFY(label("statusNewline")->geometry().right() < 520);
    int right = 0;
    for (const char *name : {"statusCursor",
                             "statusLineCount",
                             "statusCharacterCount",
                             "statusEncoding",
                             "statusNewline"}) {
        QVERIFY(label(name)->x() > right || right == 0);
        QVERIFY2(label(name)->width() > 0, name);
        right = label(name)->geometry().right();
    }
}

void StatusBarViewTest::bar_darkPalette_isLegible()
{
    const QColor background(30, 30, 30);
    QPalette dark;
    dark.setColor(QPalette::Window, background);
    dark.setColor(QPalette::WindowText, QColor(230, 230, 230));
    for (const auto role : {QPalette::Light, QPalette::Midlight, QPalette::Mid, QPalette::Dark})
        dark.setColor(role, background); // Some themes draw all edges this faintly.
    m_bar->setPalette(dark);
    const auto strongest = [this, background](const QRect &area) {
        const QImage image = m_bar->grab(area).toImage();
        int most = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                most = std::max(most, qGray(image.pixel(x, y)) - qGray(background.rgb()));
        return most;
    };
    QVERIFY(strongest(label("statusEncoding")->parentWidget()->geometry()) > 150);
    for (const QFrame *frame : m_bar->findChildren<QFrame *>()) {
        if (frame->frameShape() == QFrame::VLine) {
            const QRect place(frame->mapTo(m_bar.get(), QPoint()), frame->size());
            QVERIFY2(strongest(place) > 20, qPrintable(QString::number(strongest(place))));
        }
    }
    m_state->setMacroNotificationMessage(u"MMMM"_s);
    QVERIFY(strongest(message()->geometry()) > 100);
}

QTEST_MAIN(StatusBarViewTest)
#include "StatusBarViewTest.moc"
