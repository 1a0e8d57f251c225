#include "app/PromptDialog.h"

#include "wording/WordingLookup.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kFieldSize(200, 24);

QLabel *plainLabel(const QString &text)
{
    auto *label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

} // namespace

PromptDialog::PromptDialog(const QString &message, QWidget *field, QWidget *parent)
    : QDialog(parent)
{
    const QString title = wording::text(u"dialog.inputTitle"_s);
    setWindowTitle(title);
    setModal(true);

    QLabel *titleLabel = plainLabel(title);
    QFont bold = titleLabel->font();
    bold.setBold(true);
    titleLabel->setFont(bold);
    QLabel *messageLabel = plainLabel(message);
    messageLabel->setBuddy(field);
    field->setAccessibleName(message);
    field->setMinimumSize(kFieldSize);

    auto *okButton = new QPushButton(wording::text(u"common.ok"_s));
    auto *cancelButton = new QPushButton(wording::text(u"common.cancel"_s));
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
