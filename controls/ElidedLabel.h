#pragma once

#include <QLabel>

namespace penwick {

/// A label with one line of plain text. A line that is too long for the label is cut off at its end
/// with an ellipsis. The label has no minimum width, so no text can keep a window wide. `text()` is
/// the line also for assistive technology.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    /// Shows `text` on one line: every line break in it becomes a space. The line is cut as by
    /// `cutText` at `kLongestShown`. Set the label's buddy before.
    void setLine(const QString &text);
    /// Returns what is painted at the current width: the line, or its start and an ellipsis.
    [[nodiscard]] QString displayedText() const;

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    /// Returns the colour of the text: the palette's window text unless overridden.
    [[nodiscard]] virtual QColor textColor() const;
};

} // namespace penwick
