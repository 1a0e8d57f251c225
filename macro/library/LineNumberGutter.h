#pragma once

#include <QWidget>

#include <optional>

namespace penwick {

class TextView;

/// The numbers of the lines of a text view, beside it and as high as it. Lines end with line feeds;
/// a row that a long line wraps into has no number. A click on a number selects the line.
class LineNumberGutter final : public QWidget
{
    Q_OBJECT

public:
    /// \param view not owned; must outlive the gutter.
    explicit LineNumberGutter(TextView *view, QWidget *parent = nullptr);

    /// Puts a sign beside a line's number; 0-based.
    void setErrorLine(std::optional<qint64> line);

    [[nodiscard]] QSize sizeHint() const override;

    /// Makes room for the number of the text's last line.
    void updateWidth();

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void paintSign(QPainter &painter, qreal top, const QColor &color) const;
    [[nodiscard]] qreal signSize() const;

    TextView *m_view;
    std::optional<qint64> m_errorLine;
};

} // namespace penwick
