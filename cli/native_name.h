// Names of the system, as they stand in arguments, answers and the library's paths, and
// std::filesystem. The standard library takes a narrow name for UTF-8 on Windows, where it is in
// the ANSI code page; so no name goes to std::filesystem or comes from it but through these two.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace zvrsit::cli {

std::filesystem::path PathOf(const std::string& name);
// A character that the code page lacks becomes "?", which no file of Windows has in its name.
std::string NameOf(const std::filesystem::path& path);

// UTF-8, as in JSON, in the bytes that names have.
std::string NarrowText(const std::string& utf8);

// The path with the letter case of the disk, where the system finds a file by any; else `path`.
std::filesystem::path AsOnDisk(const std::filesystem::path& path);

// Whether every argument of this process came as it was given. On Windows the C runtime puts a
// look-alike in the place of a character that the code page lacks: another file's name, perhaps.
bool AreArgumentsWhole();

// Runs the program with a console, if there is one, that shows and takes the bytes of the ANSI code
// page; its result.
int InAnsiConsole(const std::function<int()>& program);

}  // namespace zvrsit::cli
