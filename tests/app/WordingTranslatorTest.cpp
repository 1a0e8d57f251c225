#include "app/WordingTranslator.h"

#include "wording/WordingLookup.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QToolButton>

using namespace penwick;
using namespace Qt::StringLiterals;

class WordingTranslatorTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QCoreApplication::installTranslator(&m_translator); }

    void cleanup() { wording::setActiveValues(std::nullopt); }

    void fileDialog_made_isJapanese();
    void fieldMenu_made_isJapanese();
    void activeProfile_overridesTheDefault();
    void unknownTexts_areLeftAlone();

private:
    WordingTranslator m_translator;
};

void WordingTranslatorTest::fileDialog_made_isJapanese()
{
    QFileDialog dialog;
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.show();
    for (const QLabel *label : dialog.findChildren<QLabel *>())
        if (label->isVisible() && !label->text().isEmpty())
            QVERIFY2(label->text().at(0).unicode() > 0x7F, qPrintable(label->text()));
    for (const QToolButton *button : dialog.findChildren<QToolButton *>())
        if (button->isVisible() && !button->toolTip().isEmpty())
            QVERIFY2(button->toolTip().at(0).unicode() > 0x7F, qPrintable(button->toolTip()));
}

void WordingTranslatorTest::fieldMenu_made_isJapanese()
{
    QLineEdit field;
    const std::unique_ptr<QMenu> menu(field.createStandardContextMenu());
    for (const QAction *action : menu->actions())
        if (!action->isSeparator())
            QVERIFY2(action->text().at(0).unicode() > 0x7F, qPrintable(action->text()));
}

void WordingTranslatorTest::activeProfile_overridesTheDefault()
{
    wording::setActiveValues(QHash<QString, QString>{{u"dialog.file.name"_s, u"Name & more"_s}});
    QCOMPARE(QCoreApplication::translate("QFileDialog", "File &name:"), u"Name && more"_s);
    QCOMPARE(QCoreApplication::translate("QFileSystemModel", "Date Modified"), u"更新日時"_s);
}

void WordingTranslatorTest::unknownTexts_areLeftAlone()
{
    QCOMPARE(QCoreApplication::translate("QFileDialog", "No such text"), u"No such text"_s);
    QCOMPARE(QCoreApplication::translate("Own", "Open"), u"Open"_s);
}

QTEST_MAIN(WordingTranslatorTest)
#include "WordingTranslatorTest.moc"
