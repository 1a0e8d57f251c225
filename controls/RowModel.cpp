#include "controls/RowModel.h"

#include "controls/SidebarDelegate.h"

#include <QMimeData>

namespace penwick {

namespace {

const QString kRowType = QStringLiteral("application/x-penwick-row");

} // namespace

QStringList RowModel::mimeTypes() const
{
    return {kRowType};
}

QMimeData *RowModel::mimeData(const QModelIndexList &indexes) const
{
    if (indexes.isEmpty())
        return nullptr;
    auto *data = new QMimeData;
    data->setData(kRowType, indexes.constFirst().data(SidebarDelegate::IdRole).toString().toUtf8());
    return data;
}

// NOLINTNEXTLINE(readability-function-size): overrides a function of the toolkit.
bool RowModel::dropMimeData(const QMimeData *data,
                            Qt::DropAction /*action*/,
                            int row,
                            int /*column*/,
                            const QModelIndex & /*parent*/)
{
    Q_EMIT dropped(QString::fromUtf8(data->data(kRowType)), row < 0 ? rowCount() : row);
    return false; // Otherwise the view would remove the dragged row.
}

} // namespace penwick
