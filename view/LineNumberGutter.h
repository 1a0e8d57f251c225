#pragma once

#include "view/TextView.h"

#include <QWidget>

#include <optional>
#include <vector>

namespace penwick {

struct LineColors;

/// Shows the line numbers of a text view, beside it, at its height and in its font. Only the first
/// row of a wrapped line has a number. A click on a number selects the line, dragging selects
/// lines, and with Shift the selection grows. Its cost depends only on what is visible.
class LineNumberGutter final : public QWidget
{
    Q_OBJECT

public:
    /// \param view not owned; must outlive this.
    /// \param count what ends a line. A gutter that counts line feeds, as script engines do, has
    ///        room for the sign of an error.
    LineNumberGutter(TextView *view, TextView::LineCount count, QWidget *parent = nullptr);

    /// Shows an error sign beside a line's number; 0-based. An empty value removes the sign.
    void setErrorLine(std::optional<qint64> line);

    /// Marks the line of the caret with a background colour. Off at first.
    void setMarksCurrentLine(bool marks);

    /// The width fits the number of the last line.
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

    void mousePressEvent(QMouseEvent *event) override { selectLines(event); }

    void mouseMoveEvent(QMouseEvent *event) override { selectLines(event); }

    void mouseReleaseEvent(QMouseEvent *event) override { selectLines(event); }

    void mouseDoubleClickEvent(QMouseEvent *event) override { selectLines(event); }

    void wheelEvent(QWheelEvent *event) override;

private:
    /// Repaints, in a later turn of the event loop, if other lines are visible or the caret is in
    /// another one.
    void followView();
    void updateWidth();
    void selectLines(QMouseEvent *event);
    void paintLine(QPainter &painter,
                   const TextView::VisibleLine &line,
                   const LineColors &colors,
                   bool hasCaret) const;
    void paintSign(QPainter &painter, qreal top, const QColor &color) const;

    [[nodiscard]] bool hasSigns() const { return m_count == TextView::LineCount::LineFeeds; }

    [[nodiscard]] qreal signSize() const;

    TextView *m_view;
    TextView::LineCount m_count;
    std::optional<qint64> m_errorLine;
    bool m_marksCurrentLine = false;
    std::vector<TextView::VisibleLine> m_lines; // At the last comparison.
    qint64 m_caretLine = 0;
    bool m_willCompare = false;
};

} // namespace penwick
