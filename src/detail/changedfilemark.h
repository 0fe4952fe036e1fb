#pragma once

#include <QString>
#include <optional>

namespace kestrine {

/// The mark a changed file shows before its name, by its status compared exactly (absent counts
/// as empty): "added" "＋"; "deleted" (Gitea's word) and "removed" "－"; "renamed" "→"; anything
/// else, "Added" included, "✎". The Files tab and kestrine-cli show both use it.
QString changedFileMark(const std::optional<QString> &status);

} // namespace kestrine
