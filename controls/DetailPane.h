#pragma once

#include <QString>

class QFrame;
class QLabel;
class QLayout;
class QPushButton;
class QScrollArea;
class QVBoxLayout;
class QWidget;

namespace penwick {

class ElidedLabel;
class TextField;

// Building blocks of the details beside a list, which make all such panes look alike. Each result
// is owned by the widget or layout that it is added to.

/// Returns the vertical layout of a pane's content, with its margins.
[[nodiscard]] QVBoxLayout *makePaneLayout(QWidget *content);
/// Returns a scroll area for a content that may not fit into the window.
/// \param content owned by the scroll area.
[[nodiscard]] QScrollArea *makeScrollArea(QWidget *content);
/// Returns a framed panel around rows.
/// \param rows owned by the panel.
[[nodiscard]] QFrame *makeGroup(QLayout *rows);
/// Returns a thin horizontal line.
[[nodiscard]] QFrame *makeDivider();

[[nodiscard]] ElidedLabel *makeTitleLabel();
/// Shows a title on one line, with the whole of it as tool tip.
void setTitle(ElidedLabel *label, const QString &title);

/// For the texts of these labels use `setVerbatimText`.
[[nodiscard]] QLabel *makeSectionLabel();
[[nodiscard]] QLabel *makeFieldLabel();

/// \param name object name of the field.
[[nodiscard]] TextField *makeTextField(const QString &name);

/// \param name object name of the button.
/// \param symbol as for `symbolIcon`.
[[nodiscard]] QPushButton *makeActionButton(const QString &name, const QString &symbol);
[[nodiscard]] QPushButton *makeProminentButton(const QString &name);

} // namespace penwick
