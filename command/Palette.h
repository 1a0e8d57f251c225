#pragma once

#include "command/Headings.h"
#include "command/LinePlace.h"
#include "command/PaletteKeyRow.h"
#include "command/PaletteRow.h"
#include "text/Text.h"

#include <QFrame>
#include <QPointer>

#include <functional>
#include <optional>

class QLineEdit;
class QModelIndex;
class QListView;
class QTimer;

namespace penwick {

class PaletteModel;

/// What a palette offers, as it was when the palette was opened.
struct PaletteSource
{
    QList<PaletteRow> rows;   ///< In the order in which they are listed when nothing is typed.
    std::optional<Text> text; ///< Of the front tab; without a value there is none.
    /// Gives keys to macros; empty: the palette offers none.
    PaletteKeyRow::SetKey setKey = {};
    /// Called for the chosen row, in a later turn of the event loop.
    std::function<void(const PaletteRow &row)> run;
};

/// A field and a list over the middle of a window's top, to find and run commands, macros, tabs
/// and files by parts of words. `:` goes to a line and column of the text, `@` lists its headings,
/// and `>` finds only commands.
/// Ctrl+K gives a key to the current macro.
///
/// The focus stays in the field while the palette is open and no key is recorded. Choosing a row or
/// Escape closes it and returns the focus to where it was; it also closes when the focus goes
/// elsewhere. It deletes itself when it is closed.
class Palette final : public QFrame
{
    Q_OBJECT

public:
    /// Opens the palette.
    /// \param window the parent, over which it is shown.
    Palette(QWidget *window, PaletteSource source, const QString &typed);

    /// Returns the open palette of a window; null when there is none.
    [[nodiscard]] static Palette *openIn(const QWidget *window);

    [[nodiscard]] QString typed() const;
    void setTyped(const QString &typed);

    /// Gives the row with this id another badge.
    void setBadge(const QString &id, const QString &badge);

    /// Closes the palette without running anything.
    void dismiss();

protected:
    bool eventFilter(QObject *object, QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void makeContent();
    void makeKeyRow();
    void place();
    void showRows();
    void setRows(QList<PaletteRow> rows);
    [[nodiscard]] QList<PaletteRow> lineRows(const QString &typed) const;
    [[nodiscard]] QList<PaletteRow> headingRows(const QString &typed) const;
    void startHeadingScan();
    void scanHeadings();
    [[nodiscard]] bool pressed(const QKeyEvent &event);
    void step(int rows);
    void run(const QModelIndex &index);
    void focusDidChange(QWidget *now);

    PaletteSource m_source;
    PaletteSearch m_search;
    PaletteSearch m_headings;
    std::optional<HeadingScan> m_scan;
    qsizetype m_headingCount = 0;
    QPointer<QWidget> m_formerFocus;
    QLineEdit *m_field;
    QListView *m_list;
    PaletteModel *m_model;
    PaletteKeyRow *m_keyRow;
    QTimer *m_timer;
    bool m_isOpen = true;
};

} // namespace penwick
