#pragma once

#include <QWidget>

#include <optional>

namespace penwick {

class TextView;

/// Shows the line numbers of a text view, beside it and at its height. Lines end with line feeds;
/// only the first row of a wrapped line has a number. A click on a number selects the line.
class LineNumberGutter final : public QWidget
{
    Q_OBJECT

public:
    /// \param view not owned; must outlive this.
    explicit LineNumberGutter(TextView *view, QWidget *parent = nullptr);

    /// Shows an error sign beside a line's number; 0-based. An empty value removes the sign.
    void setErrorLine(std::optional<qint64> line);

    [[nodiscard]] QSize sizeHint() const override;

    /// Sets the width to fit the number of the last line.
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
