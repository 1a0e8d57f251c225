#pragma once

#include <QStandardItemModel>

namespace penwick {

/// The rows of a `ListDetailView`. A drop does not change them but only emits `dropped`.
class RowModel final : public QStandardItemModel
{
    Q_OBJECT

public:
    using QStandardItemModel::QStandardItemModel;

    [[nodiscard]] QStringList mimeTypes() const override;
    [[nodiscard]] QMimeData *mimeData(const QModelIndexList &indexes) const override;
    bool dropMimeData(const QMimeData *data,
                      Qt::DropAction action,
                      int row,
                      int column,
                      const QModelIndex &parent) override;

Q_SIGNALS:
    /// \param id of the dragged row.
    /// \param before the row that it was dropped before; the number of rows for the end.
    void dropped(const QString &id, int before);
};

} // namespace penwick
