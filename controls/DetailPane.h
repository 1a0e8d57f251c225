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

// What the details beside a list are put together from, so that every such pane looks alike. What
// these make belongs to whatever it is put into.

/// The vertical layout of a pane's content, with its margins.
[[nodiscard]] QVBoxLayout *makePaneLayout(QWidget *content);
/// Scrolls the content where the window is too small for it.
[[nodiscard]] QScrollArea *makeScrollArea(QWidget *content);
/// A rounded frame around rows. \param rows taken over.
[[nodiscard]] QFrame *makeGroup(QLayout *rows);
/// A thin line across.
[[nodiscard]] QFrame *makeDivider();

/// These show any text as it is.
[[nodiscard]] QLabel *makeTitleLabel();
[[nodiscard]] QLabel *makeSectionLabel();
[[nodiscard]] QLabel *makeFieldLabel();

/// \param name of the object. \param symbol as `symbolIcon` takes it.
[[nodiscard]] QPushButton *makeActionButton(const QString &name, const QString &symbol);
[[nodiscard]] QPushButton *makeProminentButton(const QString &name);

} // namespace penwick
