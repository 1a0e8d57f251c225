#include "command/PaletteModel.h"

#include "controls/VerbatimText.h"
#include "wording/WordingLookup.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

QString spokenText(const PaletteRow &row)
{
    QStringList parts{row.title, row.badge, cutText(row.detail, kLongestShown), row.atEnd};
    if (!row.isEnabled && row.kind != PaletteRow::Kind::Hint)
        parts << wording::text(u"palette.unavailable"_s);
    parts.removeAll(QString());
    return parts.join(u", "_s);
}

} // namespace

void PaletteModel::setRows(QList<PaletteRow> rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

void PaletteModel::setAtEnd(const QString &id, const QString &text)
{
    change(id, &PaletteRow::atEnd, text);
}

void PaletteModel::setBadge(const QString &id, const QString &badge)
{
    change(id, &PaletteRow::badge, badge);
}

void PaletteModel::change(const QString &id, QString PaletteRow::*part, const QString &text)
{
    for (int i = 0; i < static_cast<int>(m_rows.size()); ++i)
        if (m_rows.at(i).id == id) {
            m_rows[i].*part = text;
            Q_EMIT dataChanged(index(i), index(i));
        }
}

int PaletteModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant PaletteModel::data(const QModelIndex &index, int role) const
{
    const PaletteRow &row = m_rows.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return row.title;
    case Qt::ToolTipRole:
        return verbatimToolTip(row.title, row.detail);
    case Qt::AccessibleTextRole:
        return spokenText(row);
    case DetailRole:
        return row.detail;
    case BadgeRole:
        return row.badge;
    case AtEndRole:
        return row.atEnd;
    default:
        return {};
    }
}

Qt::ItemFlags PaletteModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    return m_rows.at(index.row()).isEnabled ? flags | Qt::ItemIsEnabled : flags;
}

} // namespace penwick
