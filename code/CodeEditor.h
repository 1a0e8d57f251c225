#pragma once

#include "code/CodeIndentation.h"
#include "code/JavaScriptDecoration.h"
#include "editor/TextStorage.h"

#include <QWidget>

class QHelpEvent;

namespace penwick {

class FindBar;
class FindController;
class LineNumberGutter;
class TextView;

/// The field for a macro's code: a text view that shows JavaScript in colours, with line numbers
/// and a find bar. The text has the focus; a label whose buddy this widget is names the text for
/// assistive technology, too.
///
/// Enter keeps the indentation, Tab indents, Ctrl+] and Ctrl+[ move the lines of the selection by
/// one level. Shift+Tab moves the focus to the previous field, as in any form; Ctrl+Tab moves it to
/// the next one.
class CodeEditor final : public QWidget
{
    Q_OBJECT

public:
    explicit CodeEditor(QWidget *parent = nullptr);
    ~CodeEditor() override;

    /// Returns the whole text. Line breaks and blanks are never converted.
    [[nodiscard]] QString text() const;
    /// Replaces the whole text, clears the undo history and the error mark, and puts the caret at
    /// the start. Lone surrogates become U+FFFD. Does not emit `textChanged`.
    void setText(const QString &text);

    /// Marks a line and scrolls to it. Lines end with line feeds. A number past the last line marks
    /// the last line, one below 1 removes the mark.
    /// \param line 1-based.
    /// \param message tool tip of the line, and part of the description for assistive technology.
    void markErrorLine(int line, const QString &message = {});
    void clearErrorMark();

    /// The marked line, 1-based; 0 for none. The next edit removes the mark.
    [[nodiscard]] int errorLine() const;

    /// For selection, caret and the edit actions.
    [[nodiscard]] TextView *textView() const { return m_view; }

    [[nodiscard]] FindBar *findBar() const { return m_findBar; }

    [[nodiscard]] QSize sizeHint() const override;
    bool eventFilter(QObject *object, QEvent *event) override;

public Q_SLOTS:
    void undo();
    void redo();

Q_SIGNALS:
    /// Emitted when the user has changed the text, also by undo and redo.
    void textChanged();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void makeTextArea();
    void relabel();
    void errorMarkChanged();
    void showErrorToolTip(const QHelpEvent &event, QWidget *widget) const;
    [[nodiscard]] bool handleKey(const QKeyEvent &event);
    [[nodiscard]] bool apply(const std::optional<indentation::Edit> &edit);

    TextStorage m_storage;
    JavaScriptDecoration m_decoration;
    QString m_errorMessage;    // Of the marked line.
    QWidget *m_area = nullptr; // The framed part, without the find bar.
    TextView *m_view = nullptr;
    LineNumberGutter *m_gutter = nullptr;
    FindBar *m_findBar = nullptr;
    FindController *m_findController = nullptr;
};

} // namespace penwick
