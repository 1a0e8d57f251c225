#include "code/ResultLine.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class ResultLineTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void line_ofTheResult_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<int>("line");
        QTest::newRow("empty") << u""_s << 0;
        QTest::newRow("none") << u"let a = 1;\n"_s << 0;
        QTest::newRow("only line") << u"return 1;"_s << 1;
        QTest::newRow("third line") << u"let a;\n\nreturn {\n  textEdits: a\n};\n"_s << 3;
        QTest::newRow("several") << u"if (a) return 1;\nreturn 2;\n"_s << 2;
        QTest::newRow("before a block's") << u"return {};\nif (a) {\n  return 1;\n}\n"_s << 1;
        QTest::newRow("only in blocks")
            << u"if (a) {\n  return 1;\n} else {\n  return 2;\n}\n"_s << 4;
        QTest::newRow("in control structures")
            << u"for (const a of b) {\n  while (a) { switch (a) { default:\n return 1; } }\n}"_s
            << 3;
        QTest::newRow("in a handler") << u"try { a(); } catch (e) {\nreturn 1; }"_s << 2;
        QTest::newRow("after a function")
            << u"function f(a) {\n  return 1;\n}\nreturn f();\nfunction g() {\n return 2; }"_s << 4;
        QTest::newRow("only in a function") << u"function f(a) {\n  return 1;\n}\nf();"_s << 0;
        QTest::newRow("in an arrow function")
            << u"const f = (a) => {\n  return 1;\n};\nconst g = a => {\n  return 2;\n};"_s << 0;
        QTest::newRow("in a callback") << u"return a.map(function (b) {\n  return b;\n});"_s << 1;
        QTest::newRow("in a method")
            << u"class A {\n  m() {\n    return 1; }\n}\nconst o = { m() {\n return 2; } };"_s << 0;
        QTest::newRow("a condition in a function")
            << u"function f() {\n  if (a) {\n    return 1;\n  }\n}"_s << 0;
        QTest::newRow("in texts and comments")
            << u"return 1;\n// return 2;\n/*\nreturn 3;\n*/\nconst s = 'return';\n`\nreturn`;"_s
            << 1;
        QTest::newRow("in a substitution")
            << u"`${a.map(b => {\n  return b;\n})}`;\nreturn 1;"_s << 4;
        QTest::newRow("a property") << u"return 1;\nf().return;"_s << 1;
        QTest::newRow("too many closed") << u"}\n)]\nreturn 1;"_s << 3;
        QTest::newRow("too few closed") << u"if (a) {\nreturn 1;"_s << 2;
    }

    void line_ofTheResult()
    {
        QFETCH(const QString, code);
        QFETCH(const int, line);
        QCOMPARE(resultLine(code), line);
    }
};

QTEST_APPLESS_MAIN(ResultLineTest)
#include "ResultLineTest.moc"
