#pragma once

#include <QPushButton>

namespace penwick {

/// The button for the most likely action, filled in the palette's highlight colour.
class ProminentButton final : public QPushButton
{
    Q_OBJECT

public:
    explicit ProminentButton(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] QColor fillColor() const;
};

} // namespace penwick
