#pragma once

#include <QToolButton>

namespace penwick {

/// A tool button that shows the start of its text when the text is long or the layout is narrow, so
/// that no text can keep a window wide. Its tool tip should say the whole text.
class ElidedButton final : public QToolButton
{
    Q_OBJECT

public:
    explicit ElidedButton(QWidget *parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
};

} // namespace penwick
