#include "platform/settings/Uuid.h"

#include <QUuid>

namespace penwick {

QString newUuid()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

IdSource randomIds()
{
    return newUuid;
}

} // namespace penwick
