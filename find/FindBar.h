#pragma once

#include "find/FindSession.h"
#include "find/TextFinder.h"

#include <QWidget>

#include <optional>

class QLabel;
class QLineEdit;
class QToolButton;

namespace penwick {

class ElidedLabel;

/// The find and replace bar below the text: fields, switches and buttons. It only shows state and
/// emits the user's requests; it searches nothing itself. All labels come from the wording lookup
/// and follow a change of the wording at once.
///
/// The child widgets are created when the bar is first shown or filled in, because most windows
/// never open it. The bar keeps its state apart from them, so only `make` and `showState` depend on
/// whether they exist.
class FindBar final : public QWidget
{
    Q_OBJECT

public:
    explicit FindBar(QWidget *parent = nullptr);

    /// The pattern in the search field, with the options that the switches select.
    [[nodiscard]] const FindPattern &pattern() const { return m_pattern; }

    [[nodiscard]] const QString &replacement() const { return m_replacement; }

    /// True when a search continues at the other end of the text.
    [[nodiscard]] bool wraps() const { return m_wraps; }

    /// Puts `string` into the search field, escaped when regular expressions are switched on.
    void setPatternText(const QString &string);
    /// Moves the focus to the search field and selects its content. Call it when the bar is shown.
    void focusSearchField();

    /// Shows or hides the row for replacing.
    void setReplaceIsShown(bool isShown);

    /// Shows the number of the selected match and the number of all matches.
    /// \param isWrapped true when the selected match was found after continuing at the other end of
    ///        the text.
    void showCount(const FindSession::Count &count, bool isWrapped);
    /// Shows why the pattern cannot be searched for. Shows nothing for no error and for an empty
    /// pattern.
    void showError(const std::optional<FindPatternError> &error);
    /// Shows how many matches were replaced.
    void showReplaced(qint64 count);
    /// Shows that Replace All is running; with false, clears the message about replacing.
    void showReplacing(bool isReplacing);

    void setVisible(bool isVisible) override;
    bool eventFilter(QObject *object, QEvent *event) override;

Q_SIGNALS:
    void patternDidChange();
    void nextRequested();
    void previousRequested();
    void replaceRequested();
    void replaceAllRequested();
    void closeRequested();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void make();
    void makeSearchRow();
    void makeReplaceRow();
    void setTabOrders();
    QToolButton *addButton(QWidget *row, const char *name);
    QToolButton *addSwitch(QWidget *row, const char *name, bool FindPattern::*option);
    bool returnPressed(const QObject *field, Qt::KeyboardModifiers modifiers);
    void relabel();
    void showState();
    [[nodiscard]] QString errorText() const;
    [[nodiscard]] QString replacedText() const;
    [[nodiscard]] QString countText() const;
    [[nodiscard]] QString countToolTip() const;
    [[nodiscard]] bool hasNoMatch() const;
    void updateColors();

    QWidget *m_searchRow = nullptr;
    QWidget *m_replaceRow = nullptr;
    QLineEdit *m_searchField = nullptr;
    QLineEdit *m_replaceField = nullptr;
    QLabel *m_countLabel = nullptr;
    ElidedLabel *m_errorLabel = nullptr;
    ElidedLabel *m_replacedLabel = nullptr;
    QToolButton *m_next = nullptr;
    QToolButton *m_previous = nullptr;
    QToolButton *m_case = nullptr;
    QToolButton *m_words = nullptr;
    QToolButton *m_expression = nullptr;
    QToolButton *m_wrap = nullptr;
    QToolButton *m_close = nullptr;
    QToolButton *m_replace = nullptr;
    QToolButton *m_replaceAll = nullptr;
    FindPattern m_pattern;
    QString m_replacement;
    bool m_wraps = true;
    bool m_replaceIsShown = false;
    FindSession::Count m_count;
    bool m_isWrapped = false;
    std::optional<FindPatternError> m_error;
    std::optional<qint64> m_replaced;
    bool m_isReplacing = false;
    bool m_isUpdatingColors = false;
};

} // namespace penwick
