#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QWidget>

class QPushButton;

namespace penwick {

/// The row of buttons below a pane's details, with the last one apart from the others at the far
/// end. If the row is too narrow, the others show only their symbols and have their texts as tool
/// tips.
class ButtonRow final : public QWidget
{
    Q_OBJECT

public:
    /// \param buttons owned by this row from now on.
    explicit ButtonRow(const QList<QPushButton *> &buttons, QWidget *parent = nullptr);

    /// Sets the button's text, which is shown literally.
    void setText(QPushButton *button, const QString &text);

    /// Sets a second line of the button's tool tip, and its description for assistive technology;
    /// empty for none. Not part of the text.
    void setHint(QPushButton *button, const QString &hint);

    void setShown(QPushButton *button, bool isShown);

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void fit();
    void setCompact(bool isCompact);
    [[nodiscard]] int widthWithTexts() const;

    QList<QPushButton *> m_buttons;
    QHash<QPushButton *, QString> m_texts;
    QHash<QPushButton *, QString> m_hints;
    bool m_isCompact = false;
};

} // namespace penwick
