#pragma once

#include "command/PaletteRow.h"

#include <QKeySequence>
#include <QWidget>

#include <functional>

namespace penwick {

class ElidedButton;
class ElidedLabel;
class KeyRecorder;

/// The row at the bottom of a palette that gives a key to a macro.
class PaletteKeyRow final : public QWidget
{
    Q_OBJECT

public:
    /// Gives the key to the macro of a row, or takes its key for an empty one. Returns why that is
    /// not possible, in the active wording; empty when it is done.
    using SetKey = std::function<QString(const PaletteRow &row, const QKeySequence &key)>;

    PaletteKeyRow(SetKey setKey, QWidget *parent);

    /// Sets the row that a key is offered for; if it is no macro, the row
    /// says that macros can have keys. The widget
    /// keeps its size.
    void setRow(const PaletteRow &row);

    /// Asks for a key, and takes the focus. Returns false, and does nothing, without a macro.
    bool record();

Q_SIGNALS:
    void keyChanged(const QString &rowId, const QKeySequence &key);
    /// The focus may go back.
    void ended();

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void take(const QKeySequence &key);
    void say(const QString &text);
    void showOffer();

    SetKey m_setKey;
    PaletteRow m_row;
    ElidedButton *m_offer;
    ElidedLabel *m_message;
    KeyRecorder *m_field;
};

} // namespace penwick
