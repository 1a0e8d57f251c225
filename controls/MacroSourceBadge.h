#pragma once

#include <QWidget>

namespace penwick {

/// Shows where a macro came from. Hidden when the source has no label.
class MacroSourceBadge final : public QWidget
{
    Q_OBJECT

public:
    explicit MacroSourceBadge(QWidget *parent = nullptr);

    /// Returns the label in the active wording; empty for an unknown source.
    [[nodiscard]] static QString sourceLabel(const QString &source);

    /// Shows the label of a source, looked up again at each call.
    /// \param source `builtin`, `user`, `imported`, or anything else.
    void setSource(const QString &source);

    [[nodiscard]] const QString &label() const { return m_label; }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_label;
};

} // namespace penwick
