#include "app/MessageBox.h"

#include "app/MenuTable.h"
#include "wording/WordingLookup.h"

#include <QPushButton>

namespace penwick {

MessageBox::MessageBox(Icon icon, const QString &text, QWidget *parent)
    : QMessageBox(parent)
{
    setIcon(icon);
    setTextFormat(Qt::PlainText);
    setWindowTitle(wording::text(QStringLiteral("app.name")));
    setText(text);
    setWindowModality(Qt::ApplicationModal);
}

QPushButton *MessageBox::addTextButton(const QString &label, ButtonRole role)
{
    return addButton(verbatimMenuText(label), role);
}

} // namespace penwick
