#pragma once

#include <QLabel>

namespace penwick {

/// A label of one line of plain text that is cut off at its end with an ellipsis where it lacks
/// room. It never asks for a minimum width, so no text can keep a window wide. `text()` is the
/// whole line, for assistive technology too.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    /// Shows `text` on one line: every line break in it becomes a space.
    void setLine(const QString &text);
    /// What is painted at the present width: the line, or its start and an ellipsis.
    [[nodiscard]] QString displayedText() const;

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    /// The colour of the text; the palette's window text unless overridden.
    [[nodiscard]] virtual QColor textColor() const;
};

} // namespace penwick
