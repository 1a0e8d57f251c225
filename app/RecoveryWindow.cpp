#include "app/RecoveryWindow.h"

#include "controls/ColorContrast.h"
#include "controls/VerbatimText.h"
#include "wording/WordingLookup.h"

#include <QDateTime>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kSize(720, 360);

enum Column { Name, Folder, Time, Size };

QLabel *makeExplanation()
{
    auto *label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    setVerbatimText(label, wording::text(u"recovery.explanation"_s));
    return label;
}

QTreeWidget *makeList()
{
    auto *list = new QTreeWidget;
    list->setObjectName(u"recoveredTexts"_s);
    list->setAccessibleName(wording::text(u"recovery.title"_s));
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    QPalette palette = list->palette();
    palette.setColor(QPalette::Highlight, readableHighlight(palette));
    list->setPalette(palette);
    list->setAllColumnsShowFocus(true);
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setTextElideMode(Qt::ElideMiddle);
    list->setHeaderLabels({wording::text(u"recovery.columnName"_s),
                           wording::text(u"recovery.columnFolder"_s),
                           wording::text(u"recovery.columnTime"_s),
                           wording::text(u"recovery.columnSize"_s)});
    list->header()->setStretchLastSection(false);
    list->header()->setSectionResizeMode(Name, QHeaderView::Stretch);
    list->header()->setSectionResizeMode(Folder, QHeaderView::Stretch);
    for (const int column : {Time, Size})
        list->header()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
    return list;
}

QString nameOf(const RecoveryOrigin &origin)
{
    if (!origin.filePath.isEmpty())
        return QFileInfo(origin.filePath).fileName();
    return origin.name.isEmpty() ? wording::text(u"editor.untitled"_s) : origin.name;
}

QString folderOf(const RecoveryOrigin &origin)
{
    return origin.filePath.isEmpty() ? wording::text(u"recovery.neverSaved"_s)
                                     : QDir::toNativeSeparators(QFileInfo(origin.filePath).path());
}

} // namespace

RecoveryWindow::RecoveryWindow(QWidget *parent)
    : QDialog(parent)
    , m_list(makeList())
{
    setWindowTitle(wording::text(u"recovery.title"_s));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(makeExplanation());
    layout->addWidget(m_list);
    auto *buttons = new QDialogButtonBox;
    const auto add = [&](const QString &label, QDialogButtonBox::ButtonRole role) {
        QPushButton *button = buttons->addButton(QString(), role);
        setVerbatimText(button, label);
        return button;
    };
    m_open = add(wording::text(u"recovery.open"_s), QDialogButtonBox::ActionRole);
    m_compare = add(wording::text(u"recovery.compare"_s), QDialogButtonBox::ActionRole);
    m_save = add(wording::text(u"recovery.saveElsewhere"_s), QDialogButtonBox::ActionRole);
    m_discard = add(wording::text(u"recovery.discard"_s), QDialogButtonBox::DestructiveRole);
    const QPushButton *later =
        add(wording::text(u"recovery.later"_s), QDialogButtonBox::RejectRole);
    layout->addWidget(buttons);
    m_open->setDefault(true);
    resize(kSize);

    connect(later, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_open, &QPushButton::clicked, this, [this] { Q_EMIT openRequested(chosen()); });
    connect(m_list, &QTreeWidget::itemDoubleClicked, m_open, &QPushButton::click);
    connect(m_discard, &QPushButton::clicked, this, [this] { Q_EMIT discardRequested(chosen()); });
    connect(m_compare, &QPushButton::clicked, this, [this] {
        Q_EMIT compareRequested(chosen().front());
    });
    connect(
        m_save, &QPushButton::clicked, this, [this] { Q_EMIT saveRequested(chosen().front()); });
    connect(m_list, &QTreeWidget::itemSelectionChanged, this, &RecoveryWindow::updateButtons);
    updateButtons();
}

void RecoveryWindow::add(int id, const RecoverySummary &summary)
{
    const QLocale locale;
    const auto time = QDateTime::fromMSecsSinceEpoch(summary.time);
    auto *row = new QTreeWidgetItem(m_list,
                                    {visibleLine(nameOf(summary.origin)),
                                     visibleLine(folderOf(summary.origin)),
                                     locale.toString(time, QLocale::ShortFormat),
                                     locale.formattedDataSize(summary.utf8Bytes)});
    row->setData(Name, Qt::UserRole, id);
    row->setTextAlignment(Size, Qt::AlignRight | Qt::AlignVCenter);
    row->setToolTip(Name, verbatimToolTip(row->text(Name)));
    row->setToolTip(Folder, verbatimToolTip(row->text(Folder)));
    row->setToolTip(Time, verbatimToolTip(locale.toString(time, QLocale::LongFormat)));
    if (m_list->topLevelItemCount() == 1)
        m_list->setCurrentItem(row);
}

void RecoveryWindow::remove(int id)
{
    for (int i = m_list->topLevelItemCount() - 1; i >= 0; --i)
        if (m_list->topLevelItem(i)->data(Name, Qt::UserRole).toInt() == id)
            delete m_list->takeTopLevelItem(i);
    if (m_list->selectedItems().isEmpty() && m_list->currentItem() != nullptr)
        m_list->currentItem()->setSelected(true);
    if (isEmpty())
        close();
}

bool RecoveryWindow::isEmpty() const
{
    return m_list->topLevelItemCount() == 0;
}

void RecoveryWindow::setBusy(bool isBusy)
{
    // A disabled widget loses the focus, and another button would take Return.
    if (isBusy)
        m_focus = focusWidget();
    m_isBusy = isBusy;
    m_list->setEnabled(!isBusy);
    updateButtons();
    if (!isBusy && m_focus != nullptr)
        m_focus->setFocus();
}

QList<int> RecoveryWindow::chosen() const
{
    QList<int> ids;
    for (const QTreeWidgetItem *row : m_list->selectedItems())
        ids << row->data(Name, Qt::UserRole).toInt();
    return ids;
}

void RecoveryWindow::updateButtons()
{
    const auto count = m_isBusy ? 0 : m_list->selectedItems().size();
    m_open->setEnabled(count > 0);
    m_discard->setEnabled(count > 0);
    m_compare->setEnabled(count == 1);
    m_save->setEnabled(count == 1);
}

} // namespace penwick
