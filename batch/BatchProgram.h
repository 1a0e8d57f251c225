#pragma once

#include <QByteArrayList>

namespace penwick {

/// The whole of penwick-macro but `main`.
/// \param arguments without the program's name.
/// \return the exit status.
[[nodiscard]] int runBatchProgram(const QByteArrayList &arguments);

} // namespace penwick
