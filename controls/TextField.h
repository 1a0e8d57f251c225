#pragma once

#include <QLineEdit>

namespace penwick {

/// A field for one line of text of any length. Laying out a huge text takes so long that it would
/// stop the window: until the field has the focus, it shows only the start of such a text, cut as
/// by `cutText`, and is read-only.
class TextField final : public QLineEdit
{
    Q_OBJECT

public:
    explicit TextField(QWidget *parent = nullptr);

    /// Sets the text, and shows its start.
    void setWholeText(const QString &text);

    /// Returns the text, of which `text()` may be a cut start.
    [[nodiscard]] QString wholeText() const { return m_whole.isNull() ? text() : m_whole; }

protected:
    void focusInEvent(QFocusEvent *event) override;

private:
    QString m_whole; // Null if the field has all of the text.
};

} // namespace penwick
