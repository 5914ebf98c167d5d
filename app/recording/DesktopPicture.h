#pragma once

#include <filesystem>
#include <optional>
#include <string>

// The picture on the person's desktop, kept with each recording so a look
// can show the project's own wallpaper. Every failure just means no picture.
namespace recorder::DesktopPicture {

// GNOME's background picture (the dark variant when the light one is unset
// or missing); none when there is no such setting or no such file.
std::optional<std::filesystem::path> find();
// A file path from a settings value such as 'file:///usr/share/a.jpg'.
std::optional<std::filesystem::path> pathFromSetting(const std::string& value);
// Copies the picture into the folder as "wallpaper." plus its extension;
// the name of the copy, or none.
std::optional<std::string> copyInto(const std::filesystem::path& folder,
                                    const std::optional<std::filesystem::path>& picture = find());

} // namespace recorder::DesktopPicture
