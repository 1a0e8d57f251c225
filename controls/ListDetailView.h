#pragma once

#include <QIcon>
#include <QList>
#include <QString>
#include <QWidget>

#include <optional>

class QHBoxLayout;
class QKeyEvent;
class QLabel;
class QListView;
class QSplitter;
class QStackedWidget;
class QToolButton;

namespace penwick {

class RowModel;

/// A list beside the details of its selected row. A header is above the list. The details are
/// replaced by a placeholder text, in the secondary colour, when no row is selected.
class ListDetailView final : public QWidget
{
    Q_OBJECT

public:
    struct Row
    {
        QString id;
        QString name;
        QString badge;            ///< Empty for none.
        QIcon symbol;             ///< Null for none.
        QString symbolMeaning;    ///< Text for assistive technology.
        std::optional<bool> isOn; ///< State of the row's switch; std::nullopt for no switch.
    };

    /// Widths in device-independent pixels.
    struct ListWidth
    {
        int minimum;
        int ideal;
        int maximum;
    };

    /// \param detail owned by this view from now on.
    ListDetailView(QWidget *detail, ListWidth width, QWidget *parent = nullptr);

    /// The layout above the list; empty at first.
    [[nodiscard]] QHBoxLayout *header() const { return m_header; }

    /// Adds a button with a symbol and a text to the header. Return presses it, as Space does.
    /// \param name object name of the button.
    /// \param symbol as for `symbolIcon`.
    /// \return the button, owned by this view.
    QToolButton *addHeaderButton(const QString &name, const QString &symbol);
    /// Sets the text of a button of the header. The text is shown literally.
    static void setHeaderText(QToolButton *button, const QString &text);

    [[nodiscard]] QListView *list() const { return m_list; }

    /// Replaces the rows. The selected row stays selected if its id still exists.
    void setRows(const QList<Row> &rows);
    void setListName(const QString &name);
    /// Lets the user move rows: by dragging, and by Alt+Up and Alt+Down. The receiver of
    /// `moveRequested` moves them.
    /// \param hint second line of the rows' tool tips from the next `setRows` on, and description
    ///        of the list for assistive technology.
    void setMovable(const QString &hint);
    void setEmptyText(const QString &text);

    /// The id of the selected row; std::nullopt if none is selected.
    [[nodiscard]] std::optional<QString> markedId() const;
    /// Selects the first row with this id, or none. Does not emit `markedByUser`.
    void mark(const std::optional<QString> &id);

    /// Shows the details, or the placeholder text.
    void setDetailShown(bool isShown);

Q_SIGNALS:
    /// Emitted when the user selects another row or none; `markedId` is the new one.
    void markedByUser();
    void switchToggled(const QString &id, bool isOn);
    /// Emitted when the user moves a row.
    /// \param place of the row after the move, 0-based.
    void moveRequested(const QString &id, int place);
    /// Emitted when the user presses Delete or Backspace in the list.
    void deleteRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void makeList();
    void colorEmptyText();
    bool handleNavigationKey(int key);
    bool handleMoveKey(const QKeyEvent &key);
    void handleDrop(const QString &id, int before);

    QHBoxLayout *m_header;
    QListView *m_list;
    RowModel *m_model;
    QStackedWidget *m_detailSide;
    QLabel *m_emptyLabel;
    QString m_moveHint; // Empty if rows cannot be moved.
    bool m_isUpdating = false;
};

} // namespace penwick
