#pragma once

#include "editor/BackgroundTask.h"
#include "preferences/Preferences.h"
#include "text/LineEnds.h"

#include <QObject>
#include <QString>

class QMenu;

namespace penwick {

class TextView;

/// The commands that convert the line ends of a text view, and their entries in its context menu. A
/// conversion is one undo step and keeps the caret and the selection at their lines and columns. A
/// long one runs in the background. If the text changes meanwhile, a conversion of the whole text
/// starts over, and one of a selection is dropped. The setting `convertPastedLineEnds`, read once,
/// makes the view convert pasted and dropped text.
class LineEndCommands final : public QObject
{
    Q_OBJECT

public:
    /// \param view not owned; must outlive this.
    /// \param scope the parent of this.
    /// \param preferences not owned, must outlive this.
    /// \param wait for this time at most, in milliseconds, a conversion blocks the main thread.
    LineEndCommands(TextView *view,
                    QObject *scope,
                    Preferences &preferences,
                    int wait = kDefaultWait);

    /// Converts the selection or, if it is empty, the whole text.
    void convert(LineEnd lineEnd);
    /// False when `convert` would change nothing.
    [[nodiscard]] bool canConvert(LineEnd lineEnd) const;
    /// Converts the whole text.
    void convertWhole(LineEnd lineEnd);

    /// The name of a line end in the active wording.
    [[nodiscard]] static QString name(LineEnd lineEnd);

private:
    static constexpr int kDefaultWait = 50; // Enough for some tens of megabytes.

    void extendMenu(QMenu *menu);
    [[nodiscard]] TextRange wholeOrSelection() const;
    void convert(TextRange range, LineEnd lineEnd);
    void apply(const Text &before, TextRange range, LineEnd lineEnd, const Text &converted);

    TextView *m_view;
    int m_wait;
    BackgroundTask m_task;
};

} // namespace penwick
