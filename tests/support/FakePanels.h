#pragma once

#include "controls/FilePanels.h"

#include <memory>

namespace penwick::test {

/// Answers the file panels, and records what they were called with.
struct FakePanels
{
    struct State
    {
        std::optional<QString> answer; ///< Nothing: the user cancels.
        QString title;
        QString name;
        QString folder;
        int questions = 0;
    };

    std::shared_ptr<State> state = std::make_shared<State>();

    [[nodiscard]] FilePanels panels() const
    {
        FilePanels panels;
        panels.open = [state = state](QWidget *, const QString &title) {
            ++state->questions;
            state->title = title;
            return state->answer;
        };
        panels.save = [state = state](QWidget *, const QString &title, const QString &name) {
            ++state->questions;
            state->title = title;
            state->name = name;
            return state->answer;
        };
        panels.openIn = [state = state](QWidget *, const QString &title, const QString &folder) {
            ++state->questions;
            state->title = title;
            state->folder = folder;
            return state->answer;
        };
        return panels;
    }
};

} // namespace penwick::test
