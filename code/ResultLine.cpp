#include "code/ResultLine.h"

#include "code/JavaScriptTokens.h"

#include <QList>

#include <algorithm>

namespace penwick {

namespace {

/// Follows the brackets of a macro's code, token by token, and notes its `return` statements.
class ResultFinder final
{
public:
    void take(QStringView token, int line)
    {
        if (token == u"return" && !isInFunction())
            (m_open.isEmpty() ? m_outerLine : m_innerLine) = line;
        else if (token == u"(")
            m_open.append(isControl(m_previous) ? Bracket::Control : Bracket::Plain);
        else if (token == u"{")
            m_open.append(beginsFunction() ? Bracket::Function : Bracket::Plain);
        else if (token == u"[" || token == u"${")
            m_open.append(Bracket::Plain);
        else if ((token == u")" || token == u"]" || token == u"}") && !m_open.isEmpty())
            m_closed = m_open.takeLast();
        m_previous = token;
    }

    [[nodiscard]] int line() const { return m_outerLine > 0 ? m_outerLine : m_innerLine; }

private:
    enum class Bracket { Plain, Control, Function };

    static bool isControl(QStringView word)
    {
        constexpr QStringView kWords[] = {
            u"if", u"for", u"while", u"switch", u"with", u"catch", u"await"};
        return std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords);
    }

    /// Parentheses before a brace are a condition or parameters.
    [[nodiscard]] bool beginsFunction() const
    {
        return m_previous == u"=>" || (m_previous == u")" && m_closed != Bracket::Control);
    }

    [[nodiscard]] bool isInFunction() const { return m_open.contains(Bracket::Function); }

    QList<Bracket> m_open; // Outermost first.
    Bracket m_closed = Bracket::Plain;
    QStringView m_previous;
    int m_outerLine = 0;
    int m_innerLine = 0;
};

} // namespace

int resultLine(QStringView code)
{
    ResultFinder finder;
    JavaScriptState state;
    int number = 0;
    for (qsizetype start = 0; start < code.size(); ++number) {
        const qsizetype lineFeed = code.indexOf(u'\n', start);
        const qsizetype end = lineFeed < 0 ? code.size() : lineFeed + 1;
        const QStringView line = code.mid(start, end - start);
        for (const JavaScriptToken &token : tokenizeJavaScript(line, state))
            if (token.kind == JavaScriptToken::Kind::Keyword ||
                token.kind == JavaScriptToken::Kind::Punctuation)
                finder.take(line.mid(token.start, token.length), number + 1);
            else if (token.kind != JavaScriptToken::Kind::Comment)
                finder.take({}, number + 1);
        start = end;
    }
    return finder.line();
}

} // namespace penwick
