#pragma once

#include "command/PaletteRow.h"

#include <QAbstractListModel>

namespace penwick {

/// The rows that a palette shows.
class PaletteModel final : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role { DetailRole = Qt::UserRole + 1, BadgeRole, AtEndRole };

    using QAbstractListModel::QAbstractListModel;

    void setRows(QList<PaletteRow> rows);

    void setAtEnd(const QString &id, const QString &text);
    void setBadge(const QString &id, const QString &badge);

    [[nodiscard]] const QList<PaletteRow> &rows() const { return m_rows; }

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    void change(const QString &id, QString PaletteRow::*part, const QString &text);

    QList<PaletteRow> m_rows;
};

} // namespace penwick
