#include "macro/library/MacroKeyRow.h"

#include "command/KeyObstacle.h"
#include "command/KeyRecorder.h"
#include "controls/DetailPane.h"
#include "controls/ElidedLabel.h"
#include "controls/VerbatimText.h"
#include "wording/WordingLookup.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPushButton>

namespace penwick {

using namespace Qt::StringLiterals;

MacroKeyRow::MacroKeyRow(MacroKeys &keys, const MacroManager &macros, QWidget *parent)
    : QWidget(parent)
    , m_keys(keys)
    , m_macros(macros)
    , m_field(new KeyRecorder)
    , m_clear(new QPushButton)
    , m_message(new ElidedLabel)
{
    m_field->setObjectName(u"macroKey"_s);
    m_clear->setObjectName(u"macroKeyClear"_s);
    m_clear->setAutoDefault(true); // Return presses the button while it has the focus.
    m_message->setObjectName(u"macroKeyMessage"_s);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_field, 2);
    layout->addWidget(m_clear);
    layout->addWidget(m_message, 3);
    connect(m_field, &KeyRecorder::keyPressed, this, &MacroKeyRow::take);
    connect(m_clear, &QPushButton::clicked, this, [this] {
        m_field->setFocus(); // The button is about to be disabled.
        take({});
    });
    connect(&m_keys, &MacroKeys::changed, this, [this] { show(m_keys.keyOf(m_id)); });
}

void MacroKeyRow::setMacro(const QString &id)
{
    m_id = id;
    m_message->clear();
    show(m_keys.keyOf(id));
}

void MacroKeyRow::relabel(const QString &name)
{
    m_field->setAccessibleName(name);
    m_field->setPlaceholderText(wording::text(u"macro.manage.keyHint"_s));
    m_field->setToolTip(verbatimToolTip(wording::text(u"macro.manage.keyTip"_s)));
    setVerbatimText(m_clear, wording::text(u"macro.manage.keyClear"_s));
}

void MacroKeyRow::take(const QKeySequence &key)
{
    const QString reason =
        key.isEmpty() ? QString() : macroKeyObstacle(m_id, key[0], m_keys, m_macros.macros());
    if (reason.isEmpty()) {
        m_message->clear();
        m_keys.setKey(m_id, key);
        return;
    }
    setTitle(m_message,
             wording::text(u"macro.manage.keyRefused"_s,
                           {key.toString(QKeySequence::NativeText), reason}));
    QAccessibleEvent alert(m_message, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void MacroKeyRow::show(const QKeySequence &key)
{
    m_field->setKey(key);
    m_clear->setEnabled(!key.isEmpty());
}

QString macroKeyObstacle(const QString &macroId,
                         QKeyCombination key,
                         const MacroKeys &keys,
                         const QList<Macro> &macros)
{
    for (const Macro &macro : macros)
        if (macro.id != macroId && keys.keyOf(macro.id) == QKeySequence(key))
            return wording::text(u"command.keyTaken"_s, {visibleLine(macro.name)});
    return keyObstacle(key);
}

} // namespace penwick
