#pragma once

#include <QKeySequence>
#include <QLineEdit>

namespace penwick {

/// A field that shows a key, and takes the next key that the user presses in it. Tab and Escape
/// keep their meaning.
class KeyRecorder final : public QLineEdit
{
    Q_OBJECT

public:
    explicit KeyRecorder(QWidget *parent = nullptr);

    /// \param key empty for none.
    void setKey(const QKeySequence &key);

Q_SIGNALS:
    /// Emitted when the user has pressed a key, which the field does not show yet. Empty for
    /// Backspace and Delete.
    void keyPressed(const QKeySequence &key);

protected:
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
};

} // namespace penwick
