#pragma once

#include <QByteArray>
#include <QHashFunctions>
#include <QList>
#include <QStringView>

namespace penwick {

// Why not a syntax highlighting library: the one that KDE's editors share is packaged for Qt 5 only
// where penwick is built, and of its two hundred languages one would be used.

/// A piece of JavaScript. Blanks are in none.
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

/// What the code before a place means to the code behind it. Made without arguments it is the state
/// at the start of a text.
struct JavaScriptState
{
    enum class Inside : quint8 { Code, LineComment, BlockComment, SingleQuotes, DoubleQuotes };

    /// The last token but comments, as far as it tells what a slash, a brace or a name would be.
    enum class Previous : quint8 {
        StatementStart,
        Operand,
        Operator,
        Dot,
        Condition, ///< `if`, `for`, ...: parentheses with a statement behind them follow.
        Block      ///< `else`, `=>`, ...: a brace would begin a block.
    };

    Inside inside = Inside::Code;
    Previous previous = Previous::StatementStart;
    /// What is open, outermost first: `(` `[`, `c` the parentheses of a condition, `b` a block, `o`
    /// an object, a back quote a template literal, `$` a substitution in one.
    QByteArray open;

    [[nodiscard]] bool isInTemplate() const { return inside == Inside::Code && open.endsWith('`'); }

    bool operator==(const JavaScriptState &) const = default;

    friend size_t qHash(const JavaScriptState &state, size_t seed = 0)
    {
        return qHashMulti(
            seed, static_cast<int>(state.inside), static_cast<int>(state.previous), state.open);
    }
};

/// Divides one line into tokens and moves `state` from its start to its end. The line comes with
/// its line break. Wrong code gives tokens all the same; whether a slash divides or begins a
/// regular expression is judged by what is before it, as far as that can be told without a parser.
[[nodiscard]] QList<JavaScriptToken> tokenizeJavaScript(QStringView line, JavaScriptState &state);

} // namespace penwick
