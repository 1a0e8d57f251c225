#pragma once

#include "code/CodeColors.h"
#include "code/JavaScriptLines.h"
#include "view/TextDecoration.h"

#include <optional>

namespace penwick {

/// Shows a text as JavaScript, and one line of it as an error. Offsets are in UTF-16 code units,
/// 0-based.
class JavaScriptDecoration final : public TextDecoration
{
public:
    JavaScriptDecoration();

    /// Marks a line of the text; 0-based, lines end with line feeds. The next edit removes the
    /// mark, and so does an empty value.
    void setErrorLine(std::optional<qint64> line);

    [[nodiscard]] std::optional<qint64> errorLine() const { return m_errorLine; }

    /// True when the unit at `offset` belongs to a punctuation token: to a bracket or an operator,
    /// not to a comment or a string.
    [[nodiscard]] bool isPunctuation(qint64 offset);

    void textChanged(const Text &text, qint64 offset, qint64 oldLength, qint64 newLength) override;
    void paletteChanged(const QPalette &palette) override;
    [[nodiscard]] quint64 colorKey(const TextSegment &segment) override;
    [[nodiscard]] QList<TextColorRange> colors(const TextSegment &segment) override;
    [[nodiscard]] QColor background(const TextSegment &segment) const override;

private:
    [[nodiscard]] QString line(qint64 number) const;
    [[nodiscard]] QList<JavaScriptToken> tokensOf(qint64 line);

    Text m_text;
    JavaScriptLines m_lines; // Lines as in the view: they end at any visual line break.
    CodeColors m_colors;
    std::optional<qint64> m_errorLine;
    qint64 m_errorStart = 0;
    qint64 m_errorEnd = 0;
    quint64 m_edits = 0;
};

} // namespace penwick
