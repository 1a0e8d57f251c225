#pragma once

#include <QObject>
#include <QStringList>

#include <functional>

class QWidget;

namespace penwick {

/// Opens files that are dropped anywhere on a window: on the text, a field, the status bar. It
/// filters the events of the whole application, because the fields of a window would otherwise take
/// the drop as text.
class FileDrop final : public QObject
{
public:
    /// True for windows that accept files. Their widgets must accept drops.
    using IsTarget = std::function<bool(const QWidget *window)>;
    /// Receives the absolute paths in a later turn of the event loop: the program that the files
    /// come from is blocked until the drop is answered.
    using Open = std::function<void(const QStringList &paths)>;

    FileDrop(IsTarget isTarget, Open open, QObject *parent = nullptr);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    IsTarget m_isTarget;
    Open m_open;
};

} // namespace penwick
