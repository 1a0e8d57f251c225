#pragma once

#include <QIcon>
#include <QList>
#include <QString>
#include <QWidget>

#include <optional>

class QHBoxLayout;
class QLabel;
class QListView;
class QSplitter;
class QStackedWidget;
class QStandardItemModel;
class QToolButton;

namespace penwick {

/// A list beside the details of what is selected in it. Below the list's header the rows; on the
/// other side the details, or a text in the secondary colour where nothing is selected.
class ListDetailView final : public QWidget
{
    Q_OBJECT

public:
    struct Row
    {
        QString id;
        QString name;
        QString badge;            ///< Empty: none.
        QIcon symbol;             ///< Null: none.
        QString symbolMeaning;    ///< In words, for assistive technology.
        std::optional<bool> isOn; ///< Of the row's switch; nothing: it has none.
    };

    /// Widths in points.
    struct ListWidth
    {
        int minimum;
        int ideal;
        int maximum;
    };

    /// \param detail taken over.
    ListDetailView(QWidget *detail, ListWidth width, QWidget *parent = nullptr);

    /// Above the list; empty at first.
    [[nodiscard]] QHBoxLayout *header() const { return m_header; }

    /// Adds a button with a symbol and a text to the header. Return presses it, as Space does.
    /// \param name of the object. \param symbol as `symbolIcon` takes it.
    /// \return the button, owned by this view.
    QToolButton *addHeaderButton(const QString &name, const QString &symbol);
    /// Shows the text as it is, on a button of the header.
    static void setHeaderText(QToolButton *button, const QString &text);

    [[nodiscard]] QListView *list() const { return m_list; }

    /// Replaces the rows. What is selected stays so if its id is still there.
    void setRows(const QList<Row> &rows);
    void setListName(const QString &name);
    void setEmptyText(const QString &text);

    /// Of the row that the list marks; nothing when it marks none.
    [[nodiscard]] std::optional<QString> markedId() const;
    /// Marks the first row with this id, or none; tells nobody.
    void mark(const std::optional<QString> &id);

    /// Whether the details show, or the text for none.
    void setDetailShown(bool isShown);

Q_SIGNALS:
    /// The person marked another row: `markedId` is the new one.
    void markedByUser();
    void switchTurned(const QString &id, bool isOn);
    /// The Delete key in the list.
    void deleteRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void makeList();
    bool selectPlace(int key);

    QHBoxLayout *m_header;
    QListView *m_list;
    QStandardItemModel *m_model;
    QStackedWidget *m_detailSide;
    QLabel *m_emptyLabel;
    bool m_isUpdating = false;
};

} // namespace penwick
