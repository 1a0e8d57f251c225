#include "macro/engine/ContextUse.h"

#include "macro/engine/ContextJson.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

constexpr QLatin1StringView kBoth = "document selection"_L1;

/// Which of its two long texts a context still has.
QString kept(const QString &code)
{
    MacroContext context;
    context.document.text = Text(QString(100'000, u'd'));
    context.selection.text = Text(QString(50'000, u's'));
    const ContextDictionary dictionary = withoutUnreadTexts(context.toDictionary(), code);
    QStringList names;
    for (const ContextEntry &entry : dictionary)
        if (const auto *object = std::get_if<ContextDictionary>(&entry.value))
            for (const ContextEntry &member : *object)
                if (const auto *text = std::get_if<Text>(&member.value); text && text->size() > 0)
                    names << entry.key;
    return names.join(u' ');
}

} // namespace

class ContextUseTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void longTexts_stayIfTheCodeMayReadThem_data();
    void longTexts_stayIfTheCodeMayReadThem();
    void shortTexts_stay();
};

void ContextUseTest::longTexts_stayIfTheCodeMayReadThem_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("names");

    const auto row = [](const char *code, QLatin1StringView names) {
        QTest::newRow(code) << QString::fromUtf8(code) << QString(names);
    };
    row("", ""_L1);
    row("return {};", ""_L1);
    row("return { cursor: { offset: context.cursor.offset + 1 } };", ""_L1);
    row("if (context.selection.hasSelection) f(context.selection.startLine)", ""_L1);
    row("context.document.lineCount", ""_L1);
    row("const c = context.cursor; const d = context.dateTime", ""_L1);
    row("context.file.name.constructor", ""_L1);
    row("f(`${context.macro.name}`)", ""_L1);
    row("context.document.text", "document"_L1);
    row("context.selection.text.length", "selection"_L1);
    row("context.document.text + context.selection.text", kBoth);
    row("context.selection.hasSelection ? 1 : context.document.text", "document"_L1);
    // An object that is passed on.
    row("const d = context.document;", "document"_L1);
    row("const {text} = context.document;", "document"_L1);
    row("context.document['text']", "document"_L1);
    row("context.document?.text", "document"_L1);
    row("context.document\n.text", "document"_L1);
    row("context.document.texts", "document"_L1);
    row("context.document.textか", "document"_L1);
    row("context.document.valueOf().text", "document"_L1);
    row("context.selection.__proto__", "selection"_L1);
    row("f(context)", kBoth);
    row("const {document} = context", kBoth);
    row("context['document']", kBoth);
    row("context?.document", kBoth);
    row("context /**/ .document.text", kBoth);
    row("context.valueOf().document.text", kBoth);
    row("context.", kBoth);
    row("context", kBoth);
    row("with (context) { text }", kBoth);
    row("const mycontext = 1;", kBoth);
    row("// context の説明\nreturn {};", kBoth);
    // Uses without the word.
    row("return eval('con' + 'text.document.text')", kBoth);
    row("return cont\\u0065xt.document.text", kBoth);
    row("return cont\\u{65}xt.document.text", kBoth);
    row("Object.prototype.__defineGetter__('cursor', Object.prototype.valueOf);"
        "delete context.cursor; context.cursor.document.text",
        kBoth);
}

void ContextUseTest::longTexts_stayIfTheCodeMayReadThem()
{
    QFETCH(QString, code);
    QTEST(kept(code), "names");
}

void ContextUseTest::shortTexts_stay()
{
    MacroContext context;
    context.document.text = Text(u"short"_s);
    const ContextDictionary dictionary = withoutUnreadTexts(context.toDictionary(), u"return {};");
    QCOMPARE(contextJson(dictionary), contextJson(context.toDictionary()));
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::ContextUseTest)
#include "ContextUseTest.moc"
