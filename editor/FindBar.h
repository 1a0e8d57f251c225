#pragma once

#include "editor/FindSession.h"
#include "editor/TextFinder.h"

#include <QWidget>

#include <optional>

class QLabel;
class QLineEdit;
class QToolButton;

namespace penwick {

class ElidedLabel;

/// The bar below the text to find and replace with: fields, switches and buttons. It shows what it
/// is told and reports what is asked of it; it searches nothing itself. Its texts come from the
/// wording lookup and follow a change of the wording at once.
///
/// Its fields and buttons are made when it is first shown or filled in, for most windows never need
/// them. Until then its pattern and replacement are empty, and a search wraps around.
class FindBar final : public QWidget
{
    Q_OBJECT

public:
    explicit FindBar(QWidget *parent = nullptr);

    /// What the field and the switches say.
    [[nodiscard]] FindPattern pattern() const;
    [[nodiscard]] QString replacement() const;
    /// Whether a search goes on at the other end of the text.
    [[nodiscard]] bool wraps() const;

    /// Puts `string` into the search field; of a regular expression, so that it stands for itself.
    void setPatternText(const QString &string);
    /// Puts the keyboard into the search field and selects what stands there.
    void focusSearchField();

    /// Shows or hides the row for replacing.
    void setReplaceIsShown(bool isShown);
    [[nodiscard]] bool replaceIsShown() const;

    /// \param isWrapped the match that is selected was found beyond an end of the text.
    void showCount(const FindSession::Count &count, bool isWrapped);
    /// Shows why nothing can be found; an empty pattern needs no word.
    void showError(const std::optional<FindPatternError> &error);
    /// Shows how many matches were replaced.
    void showReplaced(qint64 count);
    /// Shows that matches are being replaced, or with false, nothing about replacing.
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

    [[nodiscard]] bool isMade() const { return m_searchRow != nullptr; }

    void makeSearchRow();
    void makeReplaceRow();
    void setTabOrders();
    QToolButton *addButton(QWidget *row, const char *name);
    QToolButton *addSwitch(QWidget *row, const char *name);
    bool returnPressed(const QObject *field, Qt::KeyboardModifiers modifiers);
    void relabel();
    void showErrorText();
    void showCountText();
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
    FindSession::Count m_count;
    bool m_isWrapped = false;
    std::optional<FindPatternError> m_error;
    std::optional<qint64> m_replaced;
    bool m_isReplacing = false;
    bool m_isUpdatingColors = false;
};

} // namespace penwick
