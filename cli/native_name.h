// Names of the system: in arguments, in answers and in the library's paths they are narrow texts in
// the ANSI code page. On Windows the standard library takes a narrow text for UTF-8. So no name
// goes to std::filesystem or comes from it except through these two functions.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace zvrsit::cli {

std::filesystem::path PathOf(const std::string& name);
// A character that the code page lacks becomes "?", which no file of Windows has in its name.
std::string NameOf(const std::filesystem::path& path);

// The UTF-8 text of JSON, in the bytes that names have.
std::string NarrowText(const std::string& utf8);

// The path in the letter case of the disk, if the system ignores letter case; else `path`.
std::filesystem::path AsOnDisk(const std::filesystem::path& path);

// Whether every argument of this process is as it was given. On Windows the C runtime replaces a
// character that the code page lacks by one that looks like it, which may make the name of another
// file.
bool AreArgumentsWhole();

// Runs the program and gives its result. If there is a console, it shows and takes bytes of the
// ANSI code page while the program runs.
int InAnsiConsole(const std::function<int()>& program);

}  // namespace zvrsit::cli
