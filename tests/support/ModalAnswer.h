#pragma once

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QString>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <utility>

namespace penwick::test {

/// Calls `answer` with the modal window that the code under test opens next, from within that
/// window's event loop. Call this immediately before that code. To answer a second window, call it
/// again inside `answer`.
inline void answerModal(std::function<void(QWidget *)> answer)
{
    QMetaObject::invokeMethod(
        qApp,
        [answer = std::move(answer)] {
            QWidget *modal = QApplication::activeModalWidget();
            if (modal == nullptr)
                QFAIL("No modal window is open.");
            answer(modal);
        },
        Qt::QueuedConnection);
}

/// The push button of `window` with this text; null when there is none.
inline QPushButton *buttonNamed(const QWidget *window, const QString &text)
{
    for (QPushButton *button : window->findChildren<QPushButton *>())
        if (button->text() == text)
            return button;
    return nullptr;
}

/// Clicks the button with this text in the next modal window. `message` receives the window's text.
inline void clickInModal(const QString &buttonText, QString *message = nullptr)
{
    answerModal([buttonText, message](QWidget *window) {
        if (const auto *box = qobject_cast<QMessageBox *>(window); box != nullptr && message)
            *message = box->text();
        QPushButton *button = buttonNamed(window, buttonText);
        if (button == nullptr) {
            window->close();
            QFAIL(qPrintable(QStringLiteral("No button ") + buttonText));
        }
        button->click();
    });
}

/// Types a path into the name field of a file dialog, and accepts the dialog.
inline void acceptFileName(QWidget *dialog, const QString &path)
{
    dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(path);
    QMetaObject::invokeMethod(dialog, "accept");
}

/// Calls `answer` with each modal window that opens while this lives, until `answer` returns true.
class ModalAnswerer final
{
public:
    explicit ModalAnswerer(std::function<bool(QWidget *)> answer)
        : m_answer(std::move(answer))
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
            if (QWidget *modal = QApplication::activeModalWidget()) {
                m_timer.stop(); // The answer may run an event loop.
                m_hasAnswered = m_answer(modal);
                if (!m_hasAnswered)
                    m_timer.start(0);
            }
        });
        m_timer.start(0);
    }

    [[nodiscard]] bool hasAnswered() const { return m_hasAnswered; }

private:
    std::function<bool(QWidget *)> m_answer;
    QTimer m_timer;
    bool m_hasAnswered = false;
};

/// An answer for `ModalAnswerer`: clicks the button with this text in the first window that has
/// one.
inline std::function<bool(QWidget *)> clicking(const QString &buttonText)
{
    return [buttonText](QWidget *window) {
        QPushButton *button = buttonNamed(window, buttonText);
        if (button != nullptr)
            button->click();
        return button != nullptr;
    };
}

} // namespace penwick::test
