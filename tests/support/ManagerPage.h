#pragma once

#include "controls/SidebarDelegate.h"
#include "support/ModalAnswer.h"

#include <QLabel>
#include <QListView>
#include <QMainWindow>
#include <QTest>
#include <QToolButton>

namespace penwick::test {

/// Drives a manager's window as a user does: clicks rows, presses buttons, reads messages.
class ManagerPage final
{
public:
    explicit ManagerPage(QMainWindow *window)
        : m_window(window)
    {
    }

    [[nodiscard]] QListView *list() const { return m_window->findChild<QListView *>(); }

    [[nodiscard]] QModelIndex row(int row) const { return list()->model()->index(row, 0); }

    [[nodiscard]] QStringList names() const
    {
        QStringList names;
        for (int i = 0; i < list()->model()->rowCount(); ++i)
            names.append(row(i).data().toString());
        return names;
    }

    [[nodiscard]] QString badge(int i) const
    {
        return row(i).data(SidebarDelegate::BadgeRole).toString();
    }

    [[nodiscard]] QString selectedName() const
    {
        const QModelIndexList rows = list()->selectionModel()->selectedIndexes();
        return rows.isEmpty() ? QString() : rows.constFirst().data().toString();
    }

    void clickRow(int i) const
    {
        QTest::mouseClick(
            list()->viewport(), Qt::LeftButton, {}, list()->visualRect(row(i)).center());
        QCoreApplication::processEvents();
    }

    /// Clicks the switch at the row's leading edge.
    void clickSwitch(int i) const
    {
        const QRect rect = list()->visualRect(row(i));
        QTest::mouseClick(
            list()->viewport(), Qt::LeftButton, {}, QPoint(rect.left() + 16, rect.center().y()));
        QCoreApplication::processEvents();
    }

    /// The visible button with this text; null when there is none.
    [[nodiscard]] QPushButton *button(const QString &text) const
    {
        QPushButton *button = buttonNamed(m_window, text);
        return button != nullptr && button->isVisible() ? button : nullptr;
    }

    void click(const QString &text) const { QTest::mouseClick(button(text), Qt::LeftButton); }

    [[nodiscard]] QToolButton *tool(const QString &name) const
    {
        return m_window->findChild<QToolButton *>(name);
    }

    /// The texts of the visible labels, in creation order.
    [[nodiscard]] QStringList labels() const
    {
        QStringList texts;
        for (const QLabel *label : m_window->findChildren<QLabel *>())
            if (label->isVisible())
                texts.append(label->text());
        return texts;
    }

    /// Returns the text of the open message box and closes it with its only button.
    [[nodiscard]] static QString takeAlert(const QString &ok = QStringLiteral("OK"))
    {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (box == nullptr || box->buttons().size() != 1)
            return QStringLiteral("no alert");
        QString text = box->text();
        QPushButton *button = buttonNamed(box, ok);
        if (button == nullptr)
            return QStringLiteral("no such button");
        button->click();
        return text;
    }

private:
    QMainWindow *m_window;
};

} // namespace penwick::test
