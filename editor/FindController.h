#pragma once

#include "editor/FindSession.h"

#include <QObject>

#include <deque>

namespace penwick {

class FindBar;
class TextView;

/// Lets a text view be searched through a find bar: its keys, where a search begins, what is
/// selected, marked and replaced.
class FindController final : public QObject
{
    Q_OBJECT

public:
    /// \param view and \param bar not owned; both must outlive this.
    /// \param scope the widget that the keys belong to.
    /// \param context where they work: by default in its whole window.
    FindController(TextView *view,
                   FindBar *bar,
                   QWidget *scope,
                   Qt::ShortcutContext context = Qt::WindowShortcut);
    ~FindController() override;

    /// Opens the bar, with the selection as the pattern if it fits into a field, and puts the
    /// keyboard into the search field.
    void showFind();
    void showReplace();
    /// Closes the bar and puts the keyboard back into the text. False when it was not open.
    bool close();

    void findNext();
    void findPrevious();
    /// Replaces the selection if it is a match, and finds the next one.
    void replace();
    /// Replaces every match as one undo step.
    void replaceAll();

    [[nodiscard]] FindSession *session() { return &m_session; }

    bool eventFilter(QObject *object, QEvent *event) override;

private:
    enum class Direction { Forward, Backward };
    enum class Pending { Nothing, Typing, Step, Replacement, ReplaceAll };

    void connectBar();
    void addShortcuts(QWidget *scope, Qt::ShortcutContext context);
    void takeSelectionAsPattern();
    void open();
    void patternDidChange();
    void selectionDidChange();
    void searchFrom(FindPlace place, Pending pending);
    void request(Direction direction);
    void perform(Direction direction);
    [[nodiscard]] FindPlace placeAfterSelection() const;
    void found(const FindMatch &match, bool isWrapped);
    void notFound();
    void applyReplacement(const FindMatch &match, const QString &replacement);
    void applyReplaceAll(const ReplaceAllResult &result);
    void select(TextRange range);
    void abandonSearch();
    void performQueued();
    void textDidChange();
    void showState();

    TextView *m_view;
    FindBar *m_bar;
    FindSession m_session;
    Pending m_pending = Pending::Nothing;
    std::deque<Direction> m_queue; // Steps asked for while a search still runs.
    TextRange m_origin;            // Where a search while typing begins, and returns to.
    FindMatch m_lastFound;
    qint64 m_caretToKeep = 0; // Where it stood when replacing all began.
    bool m_isWrapped = false;
    bool m_isSelecting = false;
};

} // namespace penwick
