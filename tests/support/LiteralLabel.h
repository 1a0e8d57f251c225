#pragma once

#include <QAccessible>
#include <QKeySequence>
#include <QLabel>

namespace penwick::test {

/// True when `label` shows and tells `text` as it is, without an access key.
inline bool showsLiterally(QLabel *label, const QString &text)
{
    const bool takesMarks = label->buddy() != nullptr;
    const QString shown = takesMarks
                              ? label->text().replace(QStringLiteral("&&"), QStringLiteral("&"))
                              : label->text();
    const bool hasKey = takesMarks && !QKeySequence::mnemonic(label->text()).isEmpty();
    const QAccessibleInterface *told = QAccessible::queryAccessibleInterface(label);
    return shown == text && !hasKey && told->text(QAccessible::Name).contains(text);
}

} // namespace penwick::test
