#pragma once

#include "command/MacroKeys.h"
#include "macro/library/MacroManager.h"

#include <QWidget>

class QPushButton;

namespace penwick {

class ElidedLabel;
class KeyRecorder;

/// Returns why a macro cannot have a key, in the active wording: another macro has it, or a
/// `keyObstacle`. Empty when it can.
[[nodiscard]] QString macroKeyObstacle(const QString &macroId,
                                       QKeyCombination key,
                                       const MacroKeys &keys,
                                       const QList<Macro> &macros);

/// Shows the key of a macro, and lets the user give it another one or none. A change is stored at
/// once. A key that is not free changes nothing, and the row says what has it.
class MacroKeyRow final : public QWidget
{
    Q_OBJECT

public:
    /// \param keys, macros not owned; must outlive this.
    MacroKeyRow(MacroKeys &keys, const MacroManager &macros, QWidget *parent = nullptr);

    void setMacro(const QString &id);

    [[nodiscard]] KeyRecorder *field() const { return m_field; }

    /// Looks up all texts again.
    void relabel(const QString &name);

private:
    void take(const QKeySequence &key);
    void show(const QKeySequence &key);

    MacroKeys &m_keys;
    const MacroManager &m_macros;
    QString m_id;
    KeyRecorder *m_field;
    QPushButton *m_clear;
    ElidedLabel *m_message;
};

} // namespace penwick
