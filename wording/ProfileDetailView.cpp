#include "wording/ProfileDetailView.h"

#include "controls/ButtonRow.h"
#include "controls/DetailPane.h"
#include "controls/ElidedLabel.h"
#include "controls/VerbatimText.h"
#include "wording/WordingLookup.h"

#include <QDateTime>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

enum Row { Name, Id, Description, Locale, ValuesCount, CreatedAt, UpdatedAt, RowCount };

/// Makes a label whose text can be selected and copied with the mouse and the keyboard, for values
/// such as an id.
QLabel *makeValueLabel()
{
    auto *label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

/// The local form of a stored time; empty for a text that is not one.
QString localTime(const QString &stored)
{
    const QDateTime time = QDateTime::fromString(stored, Qt::ISODate);
    return time.isValid() ? QLocale().toString(time.toLocalTime(), QLocale::LongFormat) : QString();
}

QLabel *labelAt(const QGridLayout *rows, int row, int column)
{
    return qobject_cast<QLabel *>(rows->itemAtPosition(row, column)->widget());
}

} // namespace

ProfileDetailView::ProfileDetailView(QWidget *parent)
    : QWidget(parent)
    , m_title(makeTitleLabel())
    , m_section(makeSectionLabel())
    , m_rows(new QGridLayout)
    , m_exportAll(makeActionButton(u"profileExportAll"_s, u"square.and.arrow.up"_s))
    , m_delete(makeActionButton(u"profileDelete"_s, u"trash"_s))
    , m_export(makeActionButton(u"profileExport"_s, u"square.and.arrow.up"_s))
    , m_duplicate(makeActionButton(u"profileDuplicate"_s, u"doc.on.doc"_s))
    , m_apply(makeProminentButton(u"profileApply"_s))
    , m_buttons(new ButtonRow({m_delete, m_export, m_duplicate, m_apply}))
{
    makeRows();
    auto *content = new QWidget;
    auto *layout = makePaneLayout(content);
    layout->addWidget(m_title);
    layout->addWidget(m_section);
    layout->addWidget(makeGroup(m_rows));
    // Apart from the buttons below, which all have their texts only in a wide window.
    layout->addWidget(m_exportAll, 0, Qt::AlignRight);
    layout->addStretch();
    auto *all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    all->addWidget(makeScrollArea(content));
    all->addWidget(makeDivider());
    all->addWidget(m_buttons);
    connect(m_delete, &QPushButton::clicked, this, &ProfileDetailView::onDelete);
    connect(m_export, &QPushButton::clicked, this, &ProfileDetailView::onExport);
    connect(m_exportAll, &QPushButton::clicked, this, &ProfileDetailView::onExportAll);
    connect(m_duplicate, &QPushButton::clicked, this, &ProfileDetailView::onDuplicate);
    connect(m_apply, &QPushButton::clicked, this, &ProfileDetailView::onApply);
    relabel();
}

void ProfileDetailView::makeRows()
{
    for (int row = 0; row < RowCount; ++row) {
        QLabel *name = makeFieldLabel();
        QLabel *value = makeValueLabel();
        name->setBuddy(value);
        m_rows->addWidget(name, row, 0, Qt::AlignTop);
        m_rows->addWidget(value, row, 1);
    }
    m_rows->setColumnStretch(1, 1);
}

void ProfileDetailView::setProfile(const UIWordingProfile &profile)
{
    m_profile = profile;
    showProfile();
}

void ProfileDetailView::setRow(int row, const QString &label, const QString &value)
{
    setVerbatimText(labelAt(m_rows, row, 0), label);
    QLabel *valueLabel = labelAt(m_rows, row, 1);
    setVerbatimText(valueLabel, value);
    valueLabel->setAccessibleName(label + u' ' + valueLabel->text());
}

void ProfileDetailView::showProfile()
{
    setTitle(m_title, m_profile.name);
    setRow(Name, wording::text(u"profile.manage.name"_s), m_profile.name);
    setRow(Id, u"ID"_s, m_profile.id);
    setRow(Description, wording::text(u"profile.manage.description"_s), m_profile.description);
    setRow(Locale, wording::text(u"profile.manage.locale"_s), m_profile.locale);
    setRow(ValuesCount,
           wording::text(u"profile.manage.valuesCount"_s),
           QString::number(m_profile.values.size()));
    setRow(CreatedAt, wording::text(u"profile.manage.createdAt"_s), m_profile.createdAt);
    setRow(UpdatedAt, wording::text(u"profile.manage.updatedAt"_s), m_profile.updatedAt);
    for (const Row row : {CreatedAt, UpdatedAt}) {
        QLabel *label = labelAt(m_rows, row, 1);
        label->setToolTip(localTime(label->text()));
        label->setAccessibleDescription(label->toolTip());
    }
    const auto showRow = [this](int row, bool isShown) {
        labelAt(m_rows, row, 0)->setVisible(isShown);
        labelAt(m_rows, row, 1)->setVisible(isShown);
    };
    showRow(CreatedAt, !m_profile.createdAt.isEmpty());
    showRow(UpdatedAt, !m_profile.updatedAt.isEmpty());
    m_buttons->setShown(m_delete, !m_profile.isBuiltIn);
}

void ProfileDetailView::relabel()
{
    m_section->setText(wording::text(u"profile.manage.basicInfo"_s));
    const QString exportAll = wording::text(u"profile.manage.exportAll"_s);
    m_exportAll->setText(verbatimText(exportAll));
    m_exportAll->setAccessibleName(exportAll);
    m_buttons->setText(m_delete, wording::text(u"common.delete"_s));
    m_buttons->setText(m_export, wording::text(u"common.export"_s));
    m_buttons->setText(m_duplicate, wording::text(u"common.duplicate"_s));
    m_buttons->setText(m_apply, wording::text(u"profile.manage.apply"_s));
    showProfile();
}

} // namespace penwick
