#pragma once

#include <QWidget>

namespace penwick {

/// Shows where a macro came from. Takes no space where there is nothing to say.
class MacroSourceBadge final : public QWidget
{
    Q_OBJECT

public:
    explicit MacroSourceBadge(QWidget *parent = nullptr);

    /// In the active wording; empty for a source that is none of ours.
    [[nodiscard]] static QString sourceLabel(const QString &source);

    /// Looks the label up anew.
    /// \param source of a macro: `builtin`, `user`, `imported`, or anything else.
    void setSource(const QString &source);

    [[nodiscard]] const QString &label() const { return m_label; }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_label;
};

} // namespace penwick
