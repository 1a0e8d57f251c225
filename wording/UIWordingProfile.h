#pragma once

#include "platform/JsonRecord.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QString>

#include <tl/expected.hpp>

namespace penwick {

/// A set of texts for the user interface, with what is known about it. A plain value.
struct UIWordingProfile
{
    QString id;                     ///< Also the base name of the profile's file.
    QString name;                   ///< Shown in lists; may be empty.
    QString description;            ///< Free text.
    QString locale;                 ///< Language tag, `ja` or `en`. Shown, never interpreted.
    bool isBuiltIn = false;         ///< True for the two that live in memory only.
    QString createdAt;              ///< As `nowTimestamp` gives it; empty for the built-in ones.
    QString updatedAt;              ///< Likewise.
    QHash<QString, QString> values; ///< Text by wording key.

    /// The JSON text of one profile file.
    [[nodiscard]] QByteArray toJson() const;

    /// Reads a profile file. All eight members must be there with their types; others are ignored.
    /// Nothing else is checked.
    [[nodiscard]] static tl::expected<UIWordingProfile, JsonRecordError>
    fromJson(QByteArrayView json);

    bool operator==(const UIWordingProfile &) const = default;
};

/// The built-in Japanese profile. It has no values: the Japanese texts are what every lookup falls
/// back to.
[[nodiscard]] UIWordingProfile builtInJapaneseProfile();

/// The built-in English profile, with a handful of values.
[[nodiscard]] UIWordingProfile builtInEnglishProfile();

} // namespace penwick
