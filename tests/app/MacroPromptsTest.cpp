#include "app/MacroPrompts.h"

#include "support/LiteralLabel.h"
#include "support/ModalAnswer.h"
#include "wording/WordingLookup.h"

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTimeZone>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

QStringList labelTexts(const QWidget *window)
{
    QStringList texts;
    for (const QLabel *label : window->findChildren<QLabel *>())
        texts << label->text();
    return texts;
}

} // namespace

class MacroPromptsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void cleanup() { wording::setActiveValues(std::nullopt); }

    void textPrompt_shown_hasItsTextsFocusAndSelection();
    void textPrompt_profileTexts_areUsed();
    void textPrompt_answered_givesTheTextUntrimmed_data();
    void textPrompt_answered_givesTheTextUntrimmed();
    void textPrompt_ampersands_areShown();
    void textPrompt_returnKey_isOk();
    void textPrompt_escape_isCancel();
    void datePrompt_shown_offersThePatterns();
    void datePrompt_answered_formatsTheClocksTime();
    void datePrompt_cancelled_givesNothing();
    void formatDate_patterns_followUnicode_data();
    void formatDate_patterns_followUnicode();
};

void MacroPromptsTest::textPrompt_shown_hasItsTextsFocusAndSelection()
{
    test::answerModal([](QWidget *window) {
        QCOMPARE(window->windowTitle(), u"入力"_s);
        QVERIFY(window->isModal());
        QVERIFY(labelTexts(window).contains(u"入力"_s));
        QVERIFY(labelTexts(window).contains(u"何を？"_s));
        const auto *field = window->findChild<QLineEdit *>();
        QCOMPARE(window->focusWidget(), field);
        QCOMPARE(field->selectedText(), u"- "_s);
        QCOMPARE(field->accessibleName(), u"何を？"_s);
        QVERIFY(field->width() >= 200);
        const QPushButton *ok = test::buttonNamed(window, u"OK"_s);
        const QPushButton *cancel = test::buttonNamed(window, u"キャンセル"_s);
        QVERIFY(ok != nullptr && cancel != nullptr);
        QVERIFY(ok->isDefault());
        QVERIFY(ok->x() < cancel->x());
        window->close();
    });
    QVERIFY(!askForText(nullptr, u"何を？"_s, u"- "_s).has_value());
}

void MacroPromptsTest::textPrompt_profileTexts_areUsed()
{
    wording::setActiveValues(
        QHash<QString, QString>{{u"dialog.inputTitle"_s, u"Input"_s}, {u"common.ok"_s, u"Go"_s}});
    test::answerModal([](QWidget *window) {
        QCOMPARE(window->windowTitle(), u"Input"_s);
        test::buttonNamed(window, u"Go"_s)->click();
    });
    QCOMPARE(askForText(nullptr, u"m"_s, u"x"_s), u"x"_s);
}

void MacroPromptsTest::textPrompt_answered_givesTheTextUntrimmed_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("two spaces") << u"  "_s;
    QTest::newRow("empty") << u""_s;
    QTest::newRow("Japanese") << u"・ "_s;
}

void MacroPromptsTest::textPrompt_answered_givesTheTextUntrimmed()
{
    QFETCH(QString, text);
    test::answerModal([text](QWidget *window) {
        window->findChild<QLineEdit *>()->setText(text);
        test::buttonNamed(window, u"OK"_s)->click();
    });
    QCOMPARE(askForText(nullptr, u"m"_s, u"- "_s), text);
}

void MacroPromptsTest::textPrompt_ampersands_areShown()
{
    wording::setActiveValues(QHash<QString, QString>{{u"common.ok"_s, u"Yes & go"_s},
                                                     {u"common.cancel"_s, u"No & stop"_s}});
    test::answerModal([](QWidget *window) {
        for (const auto &text : {u"Yes && go"_s, u"No && stop"_s})
            QVERIFY2(test::buttonNamed(window, text) != nullptr, qPrintable(text));
        QLabel *message = window->findChildren<QLabel *>().at(1);
        QVERIFY(message->text().startsWith(u"A &"_s));
        QVERIFY(test::showsLiterally(message, u"A & B"_s));
        QCOMPARE(window->findChild<QLineEdit *>()->accessibleName(), u"A & B"_s);
        window->close();
    });
    QVERIFY(!askForText(nullptr, u"A & B"_s, u"- "_s).has_value());
}

void MacroPromptsTest::textPrompt_returnKey_isOk()
{
    test::answerModal(
        [](QWidget *window) { QTest::keyClick(window->findChild<QLineEdit *>(), Qt::Key_Return); });
    QCOMPARE(askForText(nullptr, u"m"_s, u"- "_s), u"- "_s);
}

void MacroPromptsTest::textPrompt_escape_isCancel()
{
    test::answerModal(
        [](QWidget *window) { QTest::keyClick(window->findChild<QLineEdit *>(), Qt::Key_Escape); });
    QVERIFY(!askForText(nullptr, u"m"_s, u"- "_s).has_value());
}

void MacroPromptsTest::datePrompt_shown_offersThePatterns()
{
    test::answerModal([](QWidget *window) {
        const auto *list = window->findChild<QComboBox *>();
        QStringList entries;
        for (int i = 0; i < list->count(); ++i)
            entries << list->itemText(i);
        QCOMPARE(entries,
                 (QStringList{u"yyyy-MM-dd HH:mm"_s,
                              u"yyyy-MM-dd"_s,
                              u"yyyy/MM/dd"_s,
                              u"yyyy/MM/dd HH:mm"_s,
                              u"yyyy年M月d日"_s}));
        QCOMPARE(list->currentIndex(), 0);
        QVERIFY(!list->isEditable());
        QCOMPARE(window->focusWidget(), list);
        window->close();
    });
    QVERIFY(!askForDate(nullptr, u"m"_s, systemClock()).has_value());
}

void MacroPromptsTest::datePrompt_answered_formatsTheClocksTime()
{
    const QDateTime now(QDate(2025, 3, 5), QTime(9, 7)); // In local time.
    test::answerModal([](QWidget *window) {
        window->findChild<QComboBox *>()->setCurrentIndex(3);
        test::buttonNamed(window, u"OK"_s)->click();
    });
    QCOMPARE(askForDate(nullptr, u"m"_s, [now] { return now.toUTC(); }), u"2025/03/05 09:07"_s);
}

void MacroPromptsTest::datePrompt_cancelled_givesNothing()
{
    test::clickInModal(u"キャンセル"_s);
    QVERIFY(!askForDate(nullptr, u"m"_s, systemClock()).has_value());
}

void MacroPromptsTest::formatDate_patterns_followUnicode_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("expected");
    QTest::newRow("date and time") << u"yyyy-MM-dd HH:mm"_s << u"2025-03-05 23:04"_s;
    QTest::newRow("date") << u"yyyy-MM-dd"_s << u"2025-03-05"_s;
    QTest::newRow("slashes") << u"yyyy/MM/dd"_s << u"2025/03/05"_s;
    QTest::newRow("slashes and time") << u"yyyy/MM/dd HH:mm"_s << u"2025/03/05 23:04"_s;
    QTest::newRow("Japanese") << u"yyyy年M月d日"_s << u"2025年3月5日"_s;
}

void MacroPromptsTest::formatDate_patterns_followUnicode()
{
    QFETCH(QString, pattern);
    QFETCH(QString, expected);
    QVERIFY(datePatterns().contains(pattern));
    QCOMPARE(formatDate(QDateTime(QDate(2025, 3, 5), QTime(23, 4, 59)), pattern), expected);
}

QTEST_MAIN(MacroPromptsTest)
#include "MacroPromptsTest.moc"
