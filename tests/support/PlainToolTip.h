#pragma once

#include <QString>
#include <QTextDocument>

namespace penwick::test {

/// The text of a tool tip with or without markup.
inline QString plainToolTip(const QString &toolTip)
{
    QTextDocument document;
    document.setHtml(toolTip);
    return document.toPlainText();
}

} // namespace penwick::test
