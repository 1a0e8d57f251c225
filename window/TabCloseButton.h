#pragma once

#include <QAbstractButton>

namespace penwick {

/// The button that closes a tab. While the tab's document is edited, it shows a dot instead of the
/// cross until the mouse enters it. The mark thus does not change the tab's width.
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
