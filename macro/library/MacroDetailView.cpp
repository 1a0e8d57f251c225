#include "macro/library/MacroDetailView.h"

#include "code/CodeEditor.h"
#include "command/KeyRecorder.h"
#include "controls/Alerts.h"
#include "controls/ButtonRow.h"
#include "controls/DetailPane.h"
#include "controls/ElidedLabel.h"
#include "controls/MacroSourceBadge.h"
#include "controls/TextField.h"
#include "controls/VerbatimText.h"
#include "macro/library/MacroFile.h"
#include "macro/library/MacroKeyRow.h"
#include "platform/files/AtomicFile.h"
#include "wording/WordingLookup.h"

#include <QAccessible>
#include <QFrame>
#include <QGridLayout>
#include <QGuiApplication>
#include <QInputMethod>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

MacroDetailView::MacroDetailView(FilePanels panels, MacroKeyRow *keyRow, QWidget *parent)
    : QWidget(parent)
    , m_panels(std::move(panels))
    , m_title(makeTitleLabel())
    , m_badge(new MacroSourceBadge)
    , m_section(makeSectionLabel())
    , m_keyLabel(makeFieldLabel())
    , m_keyRow(keyRow)
    , m_codeLabel(makeSectionLabel())
    , m_code(new CodeEditor)
    , m_runError(new ElidedLabel)
    , m_delete(makeActionButton(u"macroDelete"_s, u"trash"_s))
    , m_testRun(makeActionButton(u"macroTestRun"_s, u"play.fill"_s))
    , m_export(makeActionButton(u"macroExport"_s, u"square.and.arrow.up"_s))
    , m_duplicate(makeActionButton(u"macroDuplicate"_s, u"doc.on.doc"_s))
    , m_save(makeProminentButton(u"macroSave"_s))
    , m_buttons(new ButtonRow({m_delete, m_testRun, m_export, m_duplicate, m_save}))
{
    auto *heading = new QHBoxLayout;
    heading->addWidget(m_title, 1);
    heading->addWidget(m_badge, 0, Qt::AlignVCenter);
    auto *rows = new QGridLayout;
    makeFields(rows);
    m_codeLabel->setBuddy(m_code);
    auto *content = new QWidget;
    auto *layout = makePaneLayout(content);
    layout->addLayout(heading);
    layout->addWidget(m_section);
    layout->addLayout(rows);
    layout->addWidget(m_codeLabel);
    layout->addWidget(m_code, 1);
    layout->addWidget(m_runError);
    m_runError->setObjectName(u"macroRunError"_s);
    m_runError->hide();
    connect(m_code, &CodeEditor::textChanged, this, &MacroDetailView::clearRunError);
    auto *all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    all->addWidget(content, 1);
    all->addWidget(makeDivider());
    all->addWidget(m_buttons);
    makeButtons();
    relabel();
}

void MacroDetailView::makeFields(QGridLayout *rows)
{
    const QString names[] = {
        u"macroName"_s, u"macroDescription"_s, u"macroCategory"_s, u"macroHelpURL"_s};
    for (int i = 0; i < FieldCount; ++i) {
        const auto at = static_cast<std::size_t>(i);
        m_labels[at] = makeFieldLabel();
        m_labels[at]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_fields[at] = makeTextField(names[i]);
        m_labels[at]->setBuddy(m_fields[at]);
        rows->addWidget(m_labels[at], i, 0);
        rows->addWidget(m_fields[at], i, 1);
    }
    m_keyLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_keyLabel->setBuddy(m_keyRow->field());
    rows->addWidget(m_keyLabel, FieldCount, 0);
    rows->addWidget(m_keyRow, FieldCount, 1);
    connect(m_fields[Name], &TextField::textChanged, this, &MacroDetailView::showTitle);
}

void MacroDetailView::makeButtons()
{
    connect(m_delete, &QPushButton::clicked, this, &MacroDetailView::onDelete);
    connect(m_duplicate, &QPushButton::clicked, this, &MacroDetailView::onDuplicate);
    connect(m_export, &QPushButton::clicked, this, &MacroDetailView::exportMacro);
    connect(m_testRun, &QPushButton::clicked, this, [this] { Q_EMIT onTestRun(draftMacro()); });
    connect(m_save, &QPushButton::clicked, this, [this] {
        QGuiApplication::inputMethod()->commit(); // The composition is part of the edit.
        Q_EMIT onSave(draftMacro());
    });
    auto *save = new QShortcut(QKeySequence::Save, this);
    save->setContext(Qt::WidgetWithChildrenShortcut);
    connect(save, &QShortcut::activated, m_save, &QPushButton::click);
}

void MacroDetailView::setMacro(const Macro &macro)
{
    m_macro = macro;
    m_fields[Name]->setWholeText(macro.name);
    m_fields[Description]->setWholeText(macro.description);
    m_fields[Category]->setWholeText(macro.category);
    m_fields[HelpUrl]->setWholeText(macro.helpURL);
    m_code->setText(macro.code);
    m_keyRow->setMacro(macro.id);
    clearRunError();
    showTitle();
}

void MacroDetailView::setStoredMacro(const Macro &macro)
{
    const auto follow = [this, &macro](Field field, const QString Macro::*member) {
        TextField *edit = m_fields[field];
        if (edit->wholeText() == m_macro.*member && edit->wholeText() != macro.*member)
            edit->setWholeText(macro.*member);
    };
    follow(Name, &Macro::name);
    follow(Description, &Macro::description);
    follow(Category, &Macro::category);
    follow(HelpUrl, &Macro::helpURL);
    if (macro.code != m_macro.code && m_code->text() == m_macro.code) {
        m_code->setText(macro.code);
        clearRunError();
    }
    m_macro = macro;
    showTitle();
}

Macro MacroDetailView::draftMacro() const
{
    Macro draft = m_macro;
    draft.name = m_fields[Name]->wholeText();
    draft.description = m_fields[Description]->wholeText();
    draft.category = m_fields[Category]->wholeText();
    draft.helpURL = m_fields[HelpUrl]->wholeText();
    draft.code = m_code->text();
    return draft;
}

bool MacroDetailView::hasUnsavedEdits() const
{
    return draftMacro() != m_macro;
}

void MacroDetailView::editName()
{
    m_fields[Name]->setFocus();
    m_fields[Name]->selectAll();
}

void MacroDetailView::showRunError(const QString &message, int line)
{
    const QString text =
        line > 0 ? wording::text(u"macro.manage.errorInLine"_s, {QString::number(line), message})
                 : message;
    m_code->markErrorLine(line, text);
    setTitle(m_runError, text);
    m_runError->show();
    QAccessibleEvent alert(m_runError, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void MacroDetailView::clearRunError()
{
    m_code->clearErrorMark();
    m_runError->clear();
    m_runError->hide();
}

void MacroDetailView::setCanTestRun(bool canTestRun)
{
    m_canTestRun = canTestRun;
    showRunState();
}

void MacroDetailView::showRunState()
{
    m_testRun->setEnabled(m_canTestRun);
    m_buttons->setHint(m_testRun,
                       m_canTestRun ? QString() : wording::text(u"macro.manageTestRunNoEditor"_s));
}

void MacroDetailView::showTitle()
{
    const QString name = m_fields[Name]->wholeText();
    setTitle(m_title, name.isEmpty() ? wording::text(u"macro.manage.newMacro"_s) : name);
    m_badge->setSource(m_macro.source);
}

void MacroDetailView::relabel()
{
    m_section->setText(wording::text(u"macro.manage.basicInfo"_s));
    const QString labels[] = {wording::text(u"macro.manage.name"_s),
                              wording::text(u"macro.manage.description"_s),
                              wording::text(u"macro.manage.category"_s),
                              wording::text(u"macro.manage.helpURL"_s)};
    for (std::size_t i = 0; i < FieldCount; ++i) {
        setVerbatimText(m_labels[i], labels[i]);
        m_fields[i]->setAccessibleName(labels[i]);
    }
    const QString key = wording::text(u"macro.manage.key"_s);
    setVerbatimText(m_keyLabel, key);
    m_keyRow->relabel(key);
    setVerbatimText(m_codeLabel, wording::text(u"macro.manage.code"_s));
    m_buttons->setText(m_delete, wording::text(u"common.delete"_s));
    m_buttons->setText(m_testRun, wording::text(u"macro.manage.testRun"_s));
    m_buttons->setText(m_export, wording::text(u"macro.export"_s));
    m_buttons->setText(m_duplicate, wording::text(u"common.duplicate"_s));
    m_buttons->setText(m_save, wording::text(u"common.save"_s));
    showRunState();
    showTitle();
}

void MacroDetailView::exportMacro()
{
    const Macro draft = draftMacro();
    const QString name =
        draft.name.isEmpty() ? wording::text(u"macro.manageExportDefaultFilename"_s) : draft.name;
    const auto path = m_panels.save(window(), wording::text(u"macro.export"_s), name);
    if (!path)
        return;
    const bool isWritten = replaceFile(*path, MacroFile::write(draft)).has_value();
    showAlert(this,
              isWritten ? wording::text(u"macro.manageExportSuccess"_s)
                        : wording::text(u"macro.manageExportFailed"_s));
}

} // namespace penwick
