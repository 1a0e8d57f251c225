#include "code/JavaScriptTokens.h"

#include <algorithm>
#include <array>

namespace penwick {

namespace {

using Kind = JavaScriptToken::Kind;
using Inside = JavaScriptState::Inside;
using Previous = JavaScriptState::Previous;

struct Word
{
    QStringView text;
    Kind kind;
    Previous previous;
};

// `get`, `set`, `from` and `as` are left out, because they are names far more often.
constexpr std::array kWords = {
    Word{u"Infinity", Kind::Constant, Previous::Operand},
    Word{u"NaN", Kind::Constant, Previous::Operand},
    Word{u"false", Kind::Constant, Previous::Operand},
    Word{u"null", Kind::Constant, Previous::Operand},
    Word{u"true", Kind::Constant, Previous::Operand},
    Word{u"undefined", Kind::Constant, Previous::Operand},
    Word{u"async", Kind::Keyword, Previous::Operator},
    Word{u"await", Kind::Keyword, Previous::Operator},
    Word{u"break", Kind::Keyword, Previous::Operator},
    Word{u"case", Kind::Keyword, Previous::Operator},
    Word{u"catch", Kind::Keyword, Previous::Block},
    Word{u"class", Kind::Keyword, Previous::Block},
    Word{u"const", Kind::Keyword, Previous::Operator},
    Word{u"continue", Kind::Keyword, Previous::Operator},
    Word{u"debugger", Kind::Keyword, Previous::Operator},
    Word{u"default", Kind::Keyword, Previous::Operator},
    Word{u"delete", Kind::Keyword, Previous::Operator},
    Word{u"do", Kind::Keyword, Previous::Block},
    Word{u"else", Kind::Keyword, Previous::Block},
    Word{u"enum", Kind::Keyword, Previous::Operator},
    Word{u"export", Kind::Keyword, Previous::Operator},
    Word{u"extends", Kind::Keyword, Previous::Operator},
    Word{u"finally", Kind::Keyword, Previous::Block},
    Word{u"for", Kind::Keyword, Previous::Condition},
    Word{u"function", Kind::Keyword, Previous::Operator},
    Word{u"if", Kind::Keyword, Previous::Condition},
    Word{u"import", Kind::Keyword, Previous::Operator},
    Word{u"in", Kind::Keyword, Previous::Operator},
    Word{u"instanceof", Kind::Keyword, Previous::Operator},
    Word{u"let", Kind::Keyword, Previous::Operator},
    Word{u"new", Kind::Keyword, Previous::Operator},
    Word{u"of", Kind::Keyword, Previous::Operator},
    Word{u"return", Kind::Keyword, Previous::Operator},
    Word{u"static", Kind::Keyword, Previous::Block},
    Word{u"super", Kind::Keyword, Previous::Operand},
    Word{u"switch", Kind::Keyword, Previous::Operator},
    Word{u"this", Kind::Keyword, Previous::Operand},
    Word{u"throw", Kind::Keyword, Previous::Operator},
    Word{u"try", Kind::Keyword, Previous::Block},
    Word{u"typeof", Kind::Keyword, Previous::Operator},
    Word{u"var", Kind::Keyword, Previous::Operator},
    Word{u"void", Kind::Keyword, Previous::Operator},
    Word{u"while", Kind::Keyword, Previous::Condition},
    Word{u"with", Kind::Keyword, Previous::Condition},
    Word{u"yield", Kind::Keyword, Previous::Operator},
};

/// How many open brackets a state records at most, so that it stays small.
constexpr qsizetype kDepth = 200;

constexpr char16_t kLineSeparator = 0x2028;
constexpr char16_t kParagraphSeparator = 0x2029;

bool endsLine(char16_t unit)
{
    return unit == u'\n' || unit == u'\r' || unit == kLineSeparator || unit == kParagraphSeparator;
}

bool isDigit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

class Lexer final
{
public:
    Lexer(QStringView line, JavaScriptState &state)
        : m_line(line)
        , m_state(state)
    {
    }

    QList<JavaScriptToken> tokens()
    {
        while (m_at < m_line.size())
            if (m_state.inside == Inside::LineComment)
                readLineComment(m_at);
            else if (m_state.inside == Inside::BlockComment)
                readBlockComment(m_at);
            else if (m_state.inside != Inside::Code)
                readString(m_at);
            else if (m_state.isInTemplate())
                readTemplate(m_at);
            else
                readCode();
        return m_tokens;
    }

private:
    /// Returns the unit `ahead` of the current one; 0 past the end of the line.
    [[nodiscard]] char16_t peek(qsizetype ahead = 0) const
    {
        const qsizetype at = m_at + ahead;
        return at < m_line.size() ? m_line[at].unicode() : u'\0';
    }

    [[nodiscard]] char32_t character() const
    {
        const QChar unit = m_line[m_at];
        if (unit.isHighSurrogate() && QChar::isLowSurrogate(peek(1)))
            return QChar::surrogateToUcs4(unit, QChar(peek(1)));
        return unit.unicode();
    }

    void add(qsizetype start, Kind kind)
    {
        if (m_at > start)
            m_tokens.append({start, m_at - start, kind});
    }

    void addOperand(qsizetype start, Kind kind)
    {
        add(start, kind);
        m_state.previous = Previous::Operand;
    }

    void readLineComment(qsizetype start)
    {
        m_state.inside = Inside::LineComment;
        while (m_at < m_line.size() && !endsLine(peek()))
            ++m_at;
        add(start, Kind::Comment);
        if (m_at < m_line.size())
            m_state.inside = Inside::Code;
    }

    void readBlockComment(qsizetype start)
    {
        m_state.inside = Inside::BlockComment;
        const qsizetype end = m_line.indexOf(u"*/", m_at);
        m_at = end < 0 ? m_line.size() : end + 2;
        add(start, Kind::Comment);
        if (end >= 0)
            m_state.inside = Inside::Code;
    }

    /// Skips a backslash and the character that it escapes.
    void skipEscape()
    {
        const bool isPair = peek(1) == u'\r' && peek(2) == u'\n';
        m_at = std::min(m_line.size(), m_at + (isPair ? 3 : 2));
    }

    void readString(qsizetype start)
    {
        const char16_t quote = m_state.inside == Inside::SingleQuotes ? u'\'' : u'"';
        bool isOver = false;
        while (m_at < m_line.size() && !isOver) {
            const char16_t unit = peek();
            if (unit == u'\\') {
                skipEscape();
                continue;
            }
            isOver = unit == quote || unit == u'\n' || unit == u'\r';
            if (unit == quote || !isOver) // A line break is not part of the string.
                ++m_at;
        }
        addOperand(start, Kind::String);
        if (isOver)
            m_state.inside = Inside::Code;
    }

    void readTemplate(qsizetype start)
    {
        while (m_at < m_line.size()) {
            const char16_t unit = peek();
            if (unit == u'\\') {
                skipEscape();
            } else if (unit == u'`') {
                ++m_at;
                m_state.open.chop(1);
                addOperand(start, Kind::String);
                return;
            } else if (unit == u'$' && peek(1) == u'{' && m_state.open.size() < kDepth) {
                add(start, Kind::String);
                m_at += 2;
                m_state.open.append('$');
                m_state.previous = Previous::Operator;
                add(m_at - 2, Kind::Punctuation);
                return;
            } else {
                ++m_at;
            }
        }
        add(start, Kind::String);
    }

    void readCode()
    {
        const char16_t unit = peek();
        const qsizetype start = m_at;
        if (QChar(unit).isSpace() || unit == QChar::ByteOrderMark)
            ++m_at;
        else if (unit == u'"' || unit == u'\'')
            beginString(unit);
        else if (unit == u'`' && m_state.open.size() < kDepth)
            beginTemplate();
        else if (unit == u'/')
            readSlash(start);
        else if (isDigit(unit) || (unit == u'.' && isDigit(peek(1))))
            readNumber(start);
        else if (beginsName())
            readName(start);
        else
            readPunctuation(start);
    }

    void beginString(char16_t quote)
    {
        m_state.inside = quote == u'"' ? Inside::DoubleQuotes : Inside::SingleQuotes;
        ++m_at;
        readString(m_at - 1);
    }

    void beginTemplate()
    {
        m_state.open.append('`');
        ++m_at;
        readTemplate(m_at - 1);
    }

    void readSlash(qsizetype start)
    {
        if (peek(1) == u'/')
            return readLineComment(start);
        if (peek(1) == u'*') {
            m_at += 2;
            return readBlockComment(start);
        }
        const qsizetype end = m_state.previous == Previous::Operand ? -1 : endOfExpression();
        if (end < 0)
            return readPunctuation(start);
        m_at = end;
        skipName(); // The flags.
        addOperand(start, Kind::RegularExpression);
    }

    /// Returns the index after the slash that ends the regular expression here; -1 when none does
    /// in this line.
    [[nodiscard]] qsizetype endOfExpression() const
    {
        bool isInClass = false;
        for (qsizetype i = m_at + 1; i < m_line.size() && !endsLine(m_line[i].unicode()); ++i) {
            const char16_t unit = m_line[i].unicode();
            if (unit == u'\\')
                ++i;
            else if (unit == u'[')
                isInClass = true;
            else if (unit == u']')
                isInClass = false;
            else if (unit == u'/' && !isInClass)
                return i + 1;
        }
        return -1;
    }

    void skipDigits()
    {
        while (isDigit(peek()) || peek() == u'_')
            ++m_at;
    }

    void readNumber(qsizetype start)
    {
        skipDigits();
        if (peek() == u'.') {
            ++m_at;
            skipDigits();
        }
        const bool hasSign = peek(1) == u'+' || peek(1) == u'-';
        // The e of a hexadecimal number comes after its x, where the digits end.
        if ((peek() == u'e' || peek() == u'E') && isDigit(peek(hasSign ? 2 : 1)))
            m_at += hasSign ? 2 : 1;
        skipName(); // Digits of another base, the n of a BigInt, or malformed code.
        addOperand(start, Kind::Number);
    }

    [[nodiscard]] bool beginsName() const
    {
        const char32_t c = character();
        return c == U'_' || c == U'$' || c == U'#' || c == U'\\' || QChar::isLetter(c);
    }

    void skipName()
    {
        constexpr char32_t kNonJoiner = 0x200C;
        constexpr char32_t kJoiner = 0x200D;
        while (m_at < m_line.size()) {
            const char32_t c = character();
            const bool belongs = c == U'_' || c == U'$' || c == U'\\' || c == kJoiner ||
                                 c == kNonJoiner || QChar::isLetterOrNumber(c) || QChar::isMark(c);
            if (!belongs)
                return;
            m_at += QChar::requiresSurrogates(c) ? 2 : 1;
        }
    }

    void readName(qsizetype start)
    {
        if (peek() == u'#')
            ++m_at;
        skipName();
        const QStringView name = m_line.mid(start, m_at - start);
        const auto *word = std::find_if(
            kWords.begin(), kWords.end(), [name](const Word &w) { return w.text == name; });
        if (word == kWords.end() || m_state.previous == Previous::Dot)
            return addOperand(start, Kind::Identifier);
        add(start, word->kind);
        const bool isAfterFor = m_state.previous == Previous::Condition && name == u"await";
        m_state.previous = isAfterFor ? Previous::Condition : word->previous;
    }

    void readPunctuation(qsizetype start)
    {
        const char16_t unit = peek();
        m_at += QChar::requiresSurrogates(character()) ? 2 : 1;
        if (QStringView(u"([{").contains(unit))
            open(unit);
        else if (QStringView(u")]}").contains(unit))
            close(unit);
        else
            readOperator(unit);
        add(start, Kind::Punctuation);
    }

    void readOperator(char16_t unit)
    {
        const char16_t next = peek();
        if ((unit == u'+' || unit == u'-') && next == unit) {
            ++m_at; // Before or after an operand: what may follow is the same.
        } else if (unit == u'=' && next == u'>') {
            ++m_at;
            m_state.previous = Previous::Block;
        } else if (unit == u'.' && next == u'.' && peek(1) == u'.') {
            m_at += 2;
            m_state.previous = Previous::Operator;
        } else if (unit == u'.') {
            m_state.previous = Previous::Dot;
        } else {
            m_state.previous = unit == u';' ? Previous::StatementStart : Previous::Operator;
        }
    }

    void open(char16_t bracket)
    {
        const Previous before = m_state.previous;
        m_state.previous = Previous::Operator;
        char entry = static_cast<char>(bracket);
        if (bracket == u'(' && before == Previous::Condition)
            entry = 'c';
        if (bracket == u'{')
            entry = before == Previous::Operator ? 'o' : 'b';
        if (entry == 'b')
            m_state.previous = Previous::StatementStart;
        if (m_state.open.size() < kDepth)
            m_state.open.append(entry);
    }

    static bool isClosedBy(char entry, char16_t bracket)
    {
        switch (bracket) {
        case u')':
            return entry == '(' || entry == 'c';
        case u']':
            return entry == '[';
        default:
            return entry == 'b' || entry == 'o' || entry == '$';
        }
    }

    /// Closes the innermost bracket that matches, and forgets the unclosed ones inside it. A
    /// template literal is closed only by its back quote.
    void close(char16_t bracket)
    {
        m_state.previous = bracket == u'}' ? Previous::StatementStart : Previous::Operand;
        const QByteArray &open = m_state.open;
        for (qsizetype i = open.size() - 1; i >= 0 && open[i] != '`'; --i) {
            if (!isClosedBy(open[i], bracket)) {
                if (open[i] == '$')
                    return;
                continue;
            }
            if (open[i] == 'c')
                m_state.previous = Previous::Block;
            else if (open[i] == 'o')
                m_state.previous = Previous::Operand;
            m_state.open.truncate(i);
            return;
        }
    }

    QStringView m_line;
    JavaScriptState &m_state;
    qsizetype m_at = 0;
    QList<JavaScriptToken> m_tokens;
};

} // namespace

QList<JavaScriptToken> tokenizeJavaScript(QStringView line, JavaScriptState &state)
{
    return Lexer(line, state).tokens();
}

} // namespace penwick
