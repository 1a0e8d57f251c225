#include "controls/Alerts.h"
#include "controls/DetailPane.h"
#include "controls/ElidedLabel.h"
#include "controls/ListDetailView.h"
#include "controls/MessageBox.h"
#include "controls/VerbatimText.h"
#include "support/CutStart.h"
#include "support/ModalAnswer.h"
#include "support/PlainToolTip.h"

#include <QAccessible>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QTest>

#include <memory>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

/// What widgets and assistive technology get of a huge text.
class LongTextsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void verbatimTexts_huge_areCut();
    void toolTips_huge_areCut();
    void title_huge_isCutAndMoreInTheToolTip();
    void messageBox_huge_showsTheStarts();
    void question_hugeName_staysAQuestion();
    void row_huge_isCutForEveryRole();
};

void LongTextsTest::verbatimTexts_huge_areCut()
{
    const QString text = hugeText();
    QVERIFY(isCutStart(verbatimText(text), text, kLongestShown));
    QVERIFY(isCutStart(visibleLine(text), text, kLongestName));
    QLabel label;
    QPushButton button;
    setVerbatimText(&label, text);
    setVerbatimText(&button, text);
    QVERIFY(isCutStart(label.text(), text, kLongestShown));
    QVERIFY(isCutStart(button.text(), text, kLongestShown));
    label.setBuddy(&button);
    setVerbatimText(&label, text);
    QVERIFY(isCutStart(label.text(), text, kLongestShown));
}

void LongTextsTest::toolTips_huge_areCut()
{
    const QString text = hugeText();
    QVERIFY(isCutStart(plainToolTip(longToolTip(text)), text, kLongestToolTip));
    const QStringList lines = plainToolTip(verbatimToolTip(text, u"hint"_s)).split(u'\n');
    QCOMPARE(lines.size(), 2);
    QVERIFY(isCutStart(lines[0], text, kLongestToolTip));
    QCOMPARE(lines[1], u"hint"_s);
}

void LongTextsTest::title_huge_isCutAndMoreInTheToolTip()
{
    const QString text = hugeText();
    const std::unique_ptr<ElidedLabel> label(makeTitleLabel());
    setTitle(label.get(), text);
    QVERIFY(isCutStart(label->text(), text, kLongestShown));
    const auto *told = QAccessible::queryAccessibleInterface(label.get());
    QVERIFY(isCutStart(told->text(QAccessible::Name), text, kLongestShown));
    QVERIFY(isCutStart(plainToolTip(label->toolTip()), text, kLongestToolTip));
}

void LongTextsTest::messageBox_huge_showsTheStarts()
{
    const QString text = hugeText();
    MessageBox box(QMessageBox::Warning, text, nullptr);
    box.setInformation(text);
    const QPushButton *button = box.addTextButton(text, QMessageBox::AcceptRole);
    for (const QString &shown : {box.text(), box.informativeText(), button->text()})
        QVERIFY(isCutStart(shown, text, kLongestShown));
}

void LongTextsTest::question_hugeName_staysAQuestion()
{
    QString question;
    clickInModal(u"キャンセル"_s, &question);
    QCOMPARE(askAboutUnsavedChanges(nullptr, hugeText()), UnsavedAnswer::Cancel);
    QVERIFY(question.startsWith(u"「名名"_s) &&
            question.endsWith(u"名…」への変更を保存しますか？"_s));
    QVERIFY(question.size() < kLongestShown);
}

void LongTextsTest::row_huge_isCutForEveryRole()
{
    const QString text = hugeText();
    ListDetailView view(new QWidget, {200, 250, 340});
    view.setRows({{u"id"_s, text, u"badge"_s, {}, {}, std::nullopt}});
    const QModelIndex row = view.list()->model()->index(0, 0);
    QVERIFY(isCutStart(row.data().toString(), text, kLongestShown));
    QVERIFY(isCutStart(plainToolTip(row.data(Qt::ToolTipRole).toString()), text, kLongestToolTip));
    const QString told = row.data(Qt::AccessibleTextRole).toString();
    QVERIFY(told.endsWith(u", badge"_s));
    QVERIFY(isCutStart(told.chopped(7), text, kLongestShown));
}

QTEST_MAIN(LongTextsTest)
#include "LongTextsTest.moc"
