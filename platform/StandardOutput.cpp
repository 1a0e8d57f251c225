#include "platform/StandardOutput.h"

#include <QByteArray>

#include <cstdio>

namespace penwick {

void printLine(QStringView text)
{
    QByteArray line = text.toUtf8();
    line.replace('\n', ' ').replace('\r', ' ').append('\n');
    std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stdout);
    std::fflush(stdout);
}

} // namespace penwick
