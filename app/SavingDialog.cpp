#include "app/SavingDialog.h"

#include "controls/VerbatimText.h"
#include "window/TransferBar.h"
#include "wording/WordingLookup.h"

#include <QLabel>
#include <QVBoxLayout>

namespace penwick {

using namespace Qt::StringLiterals;

SavingDialog::SavingDialog(QWidget *parent, TextDocument *document, const QString &name)
    : QDialog(parent)
    , m_document(document)
{
    setWindowTitle(wording::text(u"app.name"_s));
    setWindowModality(Qt::ApplicationModal);
    auto *label = new QLabel(this);
    setVerbatimText(label, wording::text(u"dialog.savingMessage"_s, {visibleLine(name)}));
    label->setWordWrap(true);
    auto *bar = new TransferBar(document, this);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(bar);
    bar->showAtOnce();
    connect(document,
            &TextDocument::transferEnded,
            this,
            [this](TextDocument::Transfer /*transfer*/, const std::optional<DocumentError> &error) {
                m_error = error;
                accept();
            });
}

void SavingDialog::reject()
{
    if (!m_document.isNull())
        m_document->cancelTransfer(); // The end of the transfer closes the dialog.
}

} // namespace penwick
