#pragma once

#include "platform/json/JsonRecord.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QString>

#include <tl/expected.hpp>

namespace penwick {

/// Key in the user defaults for the id of the active profile.
inline const QString kActiveProfileKey = QStringLiteral("activeUIWordingProfileId");
inline const QString kBuiltInProfileId = QStringLiteral("default-ja");
inline const QString kBuiltInEnglishProfileId = QStringLiteral("default-en");

/// A set of texts for the user interface, with its metadata.
struct UIWordingProfile
{
    QString id;                     ///< Also the base name of the profile's file.
    QString name;                   ///< Shown in lists; may be empty.
    QString description;            ///< Free text.
    QString locale;                 ///< Language tag, `ja` or `en`; see `wording::ownTexts`.
    bool isBuiltIn = false;         ///< True for the two profiles that are not stored in a file.
    QString createdAt;              ///< From `nowTimestamp`; empty for the built-in profiles.
    QString updatedAt;              ///< Likewise.
    QHash<QString, QString> values; ///< Text by wording key.

    /// The JSON text of one profile file.
    [[nodiscard]] QByteArray toJson() const;

    /// Parses a profile file. All eight members must be present and have the right types; other
    /// members are ignored. Nothing else is checked.
    [[nodiscard]] static tl::expected<UIWordingProfile, JsonRecordError>
    fromJson(QByteArrayView json);

    bool operator==(const UIWordingProfile &) const = default;
};

/// Returns a predicate for the profiles with this id.
[[nodiscard]] inline auto hasProfileId(const QString &id)
{
    return [id](const UIWordingProfile &profile) { return profile.id == id; };
}

/// Returns the built-in Japanese profile. It has no values, because the Japanese texts are the
/// fallback of every lookup.
[[nodiscard]] UIWordingProfile builtInJapaneseProfile();

/// Returns the built-in English profile. It has values for a few keys only.
[[nodiscard]] UIWordingProfile builtInEnglishProfile();

} // namespace penwick
