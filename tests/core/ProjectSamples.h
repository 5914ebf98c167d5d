#pragma once

#include "model/Project.h"

#include <filesystem>
#include <map>
#include <string>

// Sample documents and real folders shared by the tests of the project
// document, its JSON form and its package.
namespace recorder::samples {

// An identifier that reads back as its number, so failures are easy to place.
Uuid fixedID(int n);

// A project with every optional field filled, every list non-empty and every
// case of the enumerations with more than one field to hold them in use.
Project fullProject();

// The same project with every enumeration field set to case `k` (modulo the
// enumeration's size), so that a sweep of k covers every case of every one.
Project withEnumerationCases(Project project, int k);

std::string readBytes(const std::filesystem::path& file);
void writeBytes(const std::filesystem::path& file, const std::string& bytes);

// Every entry under `root`, relative, with the bytes of each regular file
// ("<dir>" for a folder): the whole state of a package, to compare.
std::map<std::string, std::string> snapshot(const std::filesystem::path& root);

// A fresh folder under the system's temporary folder, removed with all it
// holds when the object goes.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

} // namespace recorder::samples
