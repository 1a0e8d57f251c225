#pragma once

#include <QAbstractButton>

namespace penwick {

/// Closes a tab. While the tab's document is edited a dot stands in its place, until the mouse
/// comes to it: so the tab is marked and stays as wide as it was.
class TabCloseButton final : public QAbstractButton
{
    Q_OBJECT

public:
    explicit TabCloseButton(QWidget *parent);

    void setEdited(bool isEdited);

    [[nodiscard]] bool isEdited() const { return m_isEdited; }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    void paintCross(QPainter &painter, const QRectF &box) const;

    bool m_isEdited = false;
};

} // namespace penwick
