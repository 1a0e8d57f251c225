#pragma once

#include <QByteArray>
#include <QHashFunctions>
#include <QList>
#include <QStringView>

namespace penwick {

// No syntax highlighting library is used: the common one for Qt is packaged for Qt 5 only on the
// systems that penwick is built on, and only one of its two hundred languages would be used.

/// A token of JavaScript. Blanks belong to no token.
struct JavaScriptToken
{
    enum class Kind {
        Comment,
        String, ///< Also the text of a template literal.
        RegularExpression,
        Number,
        Keyword,
        Constant, ///< `true`, `null`, `undefined`, ...
        Identifier,
        Punctuation
    };

    qsizetype start = 0; ///< In the line, UTF-16 code units, 0-based.
    qsizetype length = 0;
    Kind kind = Kind::Identifier;

    [[nodiscard]] qsizetype end() const { return start + length; }

    bool operator==(const JavaScriptToken &) const = default;
};

/// The lexer's state at a place in the text. A default-constructed state is that of the start.
struct JavaScriptState
{
    enum class Inside : quint8 { Code, LineComment, BlockComment, SingleQuotes, DoubleQuotes };

    /// The last token that is not a comment. It decides how a slash, a brace or a name is read.
    enum class Previous : quint8 {
        StatementStart,
        Operand,
        Operator,
        Dot,
        Condition, ///< `if`, `for`, ...: parentheses and then a statement follow.
        Block      ///< `else`, `=>`, ...: a brace begins a block.
    };

    Inside inside = Inside::Code;
    Previous previous = Previous::StatementStart;
    /// The open brackets, outermost first: `(`, `[`, `c` for the parentheses of a condition, `b`
    /// for a block, `o` for an object, a back quote for a template literal, `$` for a substitution
    /// in one.
    QByteArray open;

    [[nodiscard]] bool isInTemplate() const { return inside == Inside::Code && open.endsWith('`'); }

    bool operator==(const JavaScriptState &) const = default;

    friend size_t qHash(const JavaScriptState &state, size_t seed = 0)
    {
        return qHashMulti(
            seed, static_cast<int>(state.inside), static_cast<int>(state.previous), state.open);
    }
};

/// Splits one line into tokens and moves `state` from its start to its end. Malformed code gives
/// tokens, too. Whether a slash divides or begins a regular expression is decided by the tokens
/// before it, as far as this is possible without a parser.
/// \param line with its line break.
[[nodiscard]] QList<JavaScriptToken> tokenizeJavaScript(QStringView line, JavaScriptState &state);

} // namespace penwick
