#pragma once

#include "find/FindSession.h"

#include <QObject>

#include <deque>
#include <optional>

class QMenu;

namespace penwick {

class FindBar;
class TextView;

/// Connects a text view to a find bar: shortcuts and menu entries, where a search starts, and what
/// is selected, marked and replaced.
class FindController final : public QObject
{
    Q_OBJECT

public:
    /// \param view not owned; must outlive this.
    /// \param bar not owned; must outlive this.
    /// \param scope the parent of this and of the shortcuts.
    /// \param context where the shortcuts are active: by default in the whole window of `scope`.
    FindController(TextView *view,
                   FindBar *bar,
                   QWidget *scope,
                   Qt::ShortcutContext context = Qt::WindowShortcut);
    ~FindController() override;

    /// Opens the bar and focuses the search field. A short selection without a line separator
    /// becomes the pattern when the bar was closed or the text has the focus.
    void showFind();
    void showReplace();
    /// Closes the bar and returns the focus to the text. Returns false when the bar was not open.
    bool close();

    void findNext();
    void findPrevious();
    /// Replaces the selection if it is a match, then finds the next match.
    void replace();
    /// Replaces all matches as one undo step.
    void replaceAll();

    [[nodiscard]] FindSession *session() { return &m_session; }

    bool eventFilter(QObject *object, QEvent *event) override;

private:
    enum class Direction { Forward, Backward };
    enum class Pending { Nothing, Typing, Step, Replacement, ReplaceAll };

    void connectBar();
    void addShortcuts(QWidget *scope, Qt::ShortcutContext context);
    void extendMenu(QMenu *menu);
    void takeSelectionAsPattern();
    void open();
    void patternDidChange();
    void selectionDidChange();
    void searchFrom(FindPlace place, Pending pending);
    void request(Direction direction);
    void perform(Direction direction);
    [[nodiscard]] FindPlace placeAfterSelection() const;
    void found(const TextRange &match, bool isWrapped);
    void notFound();
    void applyReplacement(const TextRange &match, const QString &replacement);
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
    std::deque<Direction> m_queue; // Requests that arrived while a search was running.
    TextRange m_origin;            // Start of a search while typing; selected again if it fails.
    std::optional<TextRange> m_lastFound;
    qint64 m_caretToKeep = 0; // The caret offset when Replace All started.
    bool m_isWrapped = false;
    bool m_isSelecting = false;
};

} // namespace penwick
