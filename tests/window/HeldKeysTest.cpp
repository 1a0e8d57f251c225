#include "window/HeldKeys.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QShortcut>
#include <QTest>
#include <QVBoxLayout>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace penwick {

/// Tests with posted events. Those of the window system are in the journey `stopping`.
class HeldKeysTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void cleanup() { m_window.reset(); }

    void keys_held_comeInOrder();
    void keys_ofCommands_areDropped();
    void clicks_areDropped();
    void otherWindow_getsItsKeys();
    void window_gone_dropsTheKeys();

private:
    static void press(const QWidget *window,
                      int key,
                      const QString &text = {},
                      Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease})
            QCoreApplication::postEvent(window->windowHandle(),
                                        new QKeyEvent(type, key, modifiers, text));
    }

    std::unique_ptr<QWidget> m_window;
    QLineEdit *m_field = nullptr;
};

void HeldKeysTest::init()
{
    m_window = std::make_unique<QWidget>();
    auto *layout = new QVBoxLayout(m_window.get());
    m_field = new QLineEdit(m_window.get());
    layout->addWidget(m_field);
    m_window->show();
    m_field->setFocus();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void HeldKeysTest::keys_held_comeInOrder()
{
    HeldKeys keys(m_window.get());
    press(m_window.get(), Qt::Key_A, u"a"_s);
    press(m_window.get(), Qt::Key_C, u"C"_s, Qt::ShiftModifier);
    press(m_window.get(), Qt::Key_Left);
    press(m_window.get(), Qt::Key_B, u"b"_s);
    keys.collect();
    QCOMPARE(m_field->text(), QString());
    keys.deliver();
    QTRY_COMPARE(m_field->text(), u"abC"_s);
    // Nothing is held any more.
    press(m_window.get(), Qt::Key_D, u"d"_s);
    QTRY_COMPARE(m_field->text(), u"abdC"_s);
    keys.deliver();
    QCoreApplication::processEvents();
    QCOMPARE(m_field->text(), u"abdC"_s);
}

void HeldKeysTest::keys_ofCommands_areDropped()
{
    m_field->setText(u"text"_s);
    HeldKeys keys(m_window.get());
    press(m_window.get(), Qt::Key_A, u"\u0001"_s, Qt::ControlModifier);               // Select All.
    press(m_window.get(), Qt::Key_At, u"@"_s, Qt::ControlModifier | Qt::AltModifier); // AltGr.
    keys.collect();
    keys.deliver();
    QTRY_COMPARE(m_field->text(), u"text@"_s);
}

void HeldKeysTest::clicks_areDropped()
{
    HeldKeys keys(m_window.get());
    m_field->clearFocus();
    const QPoint place = m_field->geometry().center();
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease})
        QCoreApplication::postEvent(m_window->windowHandle(),
                                    new QMouseEvent(type,
                                                    place,
                                                    m_window->mapToGlobal(place),
                                                    Qt::LeftButton,
                                                    Qt::LeftButton,
                                                    Qt::NoModifier));
    keys.collect();
    QVERIFY(!m_field->hasFocus());
}

void HeldKeysTest::otherWindow_getsItsKeys()
{
    QLineEdit other;
    other.show();
    QVERIFY(QTest::qWaitForWindowExposed(&other));
    HeldKeys keys(m_window.get());
    press(&other, Qt::Key_A, u"a"_s);
    keys.collect();
    QCOMPARE(other.text(), u"a"_s);
}

void HeldKeysTest::window_gone_dropsTheKeys()
{
    HeldKeys keys(m_window.get());
    press(m_window.get(), Qt::Key_A, u"a"_s);
    keys.collect();
    m_window.reset();
    keys.deliver();
    QCoreApplication::processEvents();
}

} // namespace penwick

QTEST_MAIN(penwick::HeldKeysTest)
#include "HeldKeysTest.moc"
