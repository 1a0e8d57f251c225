#include "controls/MessageBox.h"

#include "controls/VerbatimText.h"
#include "text/CutText.h"
#include "wording/WordingLookup.h"

#include <QLabel>
#include <QPushButton>

namespace penwick {

MessageBox::MessageBox(Icon icon, const QString &text, QWidget *parent)
    : QMessageBox(parent)
{
    setIcon(icon);
    setTextFormat(Qt::PlainText);
    setWindowTitle(wording::text(QStringLiteral("app.name")));
    setText(cutText(text, kLongestShown));
    setWindowModality(Qt::ApplicationModal);
}

// The box's text format applies to its main text only, and a path in the information could contain
// markup. The blank text creates the label whose format is then set.
void MessageBox::setInformation(const QString &text)
{
    setInformativeText(QStringLiteral(" "));
    for (QLabel *label : findChildren<QLabel *>()) {
        label->setTextFormat(Qt::PlainText);
        label->setOpenExternalLinks(false);
    }
    setInformativeText(cutText(text, kLongestShown));
}

QPushButton *MessageBox::addTextButton(const QString &label, ButtonRole role)
{
    return addButton(verbatimText(label), role);
}

} // namespace penwick
