#pragma once

#include "text/Text.h"

#include <QObject>
#include <QString>

#include <optional>

namespace penwick {

/// The observable state of one editor window: its text, the counters of the status bar and the
/// message of the last macro run. Use it from the main thread.
///
/// Each setter emits `willChange` before and `didChange` after the assignment, also when the new
/// value equals the old one.
class DocumentState final : public QObject
{
    Q_OBJECT

public:
    enum class Field {
        Text,
        LineCount,
        CharacterCount,
        CursorLine,
        CursorColumn,
        MacroNotificationMessage,
    };
    Q_ENUM(Field)

    explicit DocumentState(QObject *parent = nullptr);

    /// The whole text as it was last set. Edits in the view reach it later; see `Coordinator`.
    [[nodiscard]] const Text &text() const { return m_text; }

    void setText(const Text &text);

    /// Number of pieces of the text between separators; at least 1.
    [[nodiscard]] qint64 lineCount() const { return m_lineCount; }

    void setLineCount(qint64 count);

    /// Number of grapheme clusters of the text; CR LF is one.
    [[nodiscard]] qint64 characterCount() const { return m_characterCount; }

    void setCharacterCount(qint64 count);

    /// 1-based.
    [[nodiscard]] qint64 cursorLine() const { return m_cursorLine; }

    void setCursorLine(qint64 line);

    /// 0-based, in grapheme clusters; 1 until it is first set.
    [[nodiscard]] qint64 cursorColumn() const { return m_cursorColumn; }

    void setCursorColumn(qint64 column);

    /// A fixed label: documents are always UTF-8.
    [[nodiscard]] QString encodingDisplay() const;
    /// A fixed label: it is the same for a file with CR LF line ends.
    [[nodiscard]] QString newlineDisplay() const;

    /// The message of the last macro run; absent while the status bar shows the counters.
    [[nodiscard]] const std::optional<QString> &macroNotificationMessage() const
    {
        return m_macroNotificationMessage;
    }

    void setMacroNotificationMessage(const std::optional<QString> &message);

Q_SIGNALS:
    /// `field` is about to be assigned; its getter still returns the old value.
    void willChange(penwick::DocumentState::Field field);
    /// `field` has been assigned.
    void didChange(penwick::DocumentState::Field field);

private:
    template <typename Value> void assign(Field field, Value &member, Value value);

    Text m_text;
    qint64 m_lineCount = 1;
    qint64 m_characterCount = 0;
    qint64 m_cursorLine = 1;
    qint64 m_cursorColumn = 1;
    std::optional<QString> m_macroNotificationMessage;
};

} // namespace penwick
