#pragma once

#include "text/Text.h"

#include <QAbstractButton>

#include <optional>

namespace penwick {

/// The mark of the status bar for a text whose line ends differ; hidden for any other text. Its
/// tool tip counts the line ends. A click, or Space or Enter while it has the keyboard focus, asks
/// to make them uniform.
class LineEndMark final : public QAbstractButton
{
    Q_OBJECT

public:
    explicit LineEndMark(QWidget *parent = nullptr);

    /// Shows or hides the mark for `text`. O(log n).
    void setContent(const Text &text);
    /// The line end that a click asks for: that of the text before its line ends became mixed; if
    /// it always was, the most frequent one.
    [[nodiscard]] LineEnd wanted() const;

    /// Shows the texts of the active wording.
    void redraw();

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    Text m_content;
    std::optional<LineEnd> m_former; // The only line end of the text when it was last uniform.
    QString m_label;
};

} // namespace penwick
