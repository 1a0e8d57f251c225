#include "app/PromptDialog.h"

#include "controls/VerbatimText.h"
#include "wording/WordingLookup.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kFieldSize(200, 24);

QLabel *makePromptLabel(const QString &text, QWidget *buddy = nullptr)
{
    auto *label = new QLabel;
    label->setBuddy(buddy);
    label->setWordWrap(true);
    setVerbatimText(label, text);
    return label;
}

QPushButton *makeButton(const QString &text)
{
    auto *button = new QPushButton;
    setVerbatimText(button, text);
    return button;
}

} // namespace

PromptDialog::PromptDialog(const QString &message, QWidget *field, QWidget *parent)
    : QDialog(parent)
{
    const QString title = wording::text(u"dialog.inputTitle"_s);
    setWindowTitle(title);
    setModal(true);

    QLabel *titleLabel = makePromptLabel(title);
    QFont bold = titleLabel->font();
    bold.setBold(true);
    titleLabel->setFont(bold);
    QLabel *messageLabel = makePromptLabel(message, field);
    field->setAccessibleName(message);
    field->setMinimumSize(kFieldSize);

    QPushButton *okButton = makeButton(wording::text(u"common.ok"_s));
    QPushButton *cancelButton = makeButton(wording::text(u"common.cancel"_s));
    okButton->setDefault(true);
    cancelButton->setAutoDefault(false);
    connect(okButton, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(okButton);
    buttons->addWidget(cancelButton);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(titleLabel);
    layout->addWidget(messageLabel);
    layout->addWidget(field);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    field->setFocus();
}

} // namespace penwick
