#include "view/TextMimeData.h"

#include "support/ShownTextView.h"
#include "support/TemporaryHome.h"

#include <QClipboard>
#include <QGuiApplication>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

class TextMimeDataTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void paste_onlyHtml_insertsItsText()
    {
        ShownTextView shown(u"ab");
        auto *mime = new QMimeData;
        mime->setHtml(u"<p>一行目</p><p><b>二</b>行目</p>"_s);
        QGuiApplication::clipboard()->setMimeData(mime);
        QVERIFY(shown.view.canPaste());
        shown.caret(1);
        shown.view.paste();
        QCOMPARE(shown.text(), u"a一行目\n二行目b"_s);
        shown.view.undo();
        QCOMPARE(shown.text(), u"ab"_s);
    }

    void text_besideHtml_isTaken()
    {
        QMimeData mime;
        mime.setHtml(u"<b>styled</b>"_s);
        mime.setText(u"plain"_s);
        QVERIFY(textOf(&mime) == Text(u"plain"));
    }

    void html_withoutText_isNothing()
    {
        QMimeData mime;
        mime.setHtml(u"<img src='x.png'>"_s);
        QVERIFY(!textOf(&mime).has_value());
    }

    void html_inOtherEncodings_isRead()
    {
        QMimeData mime;
        mime.setData(u"text/html"_s, QByteArray("\xFF\xFE<\0b\0>\0\x42\x30", 10));
        QVERIFY(textOf(&mime) == Text(u"あ"));
        mime.setData(u"text/html"_s, "<meta charset=\"utf-8\">\xE3\x81\x82");
        QVERIFY(textOf(&mime) == Text(u"あ"));
    }

    void html_tooLong_isNotConverted()
    {
        QMimeData mime;
        mime.setHtml(QString(qsizetype{5} << 20U, u'a'));
        QVERIFY(!textOf(&mime).has_value());
    }
};

QTEST_MAIN(TextMimeDataTest)
#include "TextMimeDataTest.moc"
