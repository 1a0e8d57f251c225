#pragma once

#include "command/Command.h"

namespace penwick {

class AppDelegate;

/// Carries out every command: those of the application itself, the others by passing them to their
/// place. The target of commands about a document is `AppDelegate::targetEditor`.
class AppCommands final : public CommandTarget
{
public:
    /// \param app not owned; must outlive this.
    explicit AppCommands(AppDelegate *app)
        : m_app(app)
    {
    }

    [[nodiscard]] CommandState commandState(CommandId id) const override;
    void performCommand(CommandId id) override;

private:
    [[nodiscard]] CommandTarget *targetAt(CommandPlace place) const;
    void performHere(CommandId id);
    void performOnDocument(CommandId id);

    AppDelegate *m_app;
};

} // namespace penwick
