#pragma once

#include <QString>
#include <QStringView>

namespace penwick {

/// Returns the text of an HTML page or fragment without its markup: one line for each block, cells
/// of a table row separated by tabs, white space as a browser shows it. Reads nothing but `html`,
/// in time proportional to its length, whatever it contains.
[[nodiscard]] QString textOfHtml(QStringView html);

} // namespace penwick
