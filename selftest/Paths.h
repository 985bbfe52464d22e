// Paths: files and folders by their wide names, whatever the process's code page is.
#pragma once

#include <string>
#include <vector>

namespace selftest
{
std::string Utf8(const std::wstring& text);
std::wstring Wide(const std::string& utf8);

// The folder that this program's file is in, without a separator at its end.
std::wstring OwnFolder();
bool IsFile(const std::wstring& path);
// Names of the files in a folder that end in the extension, in the order of the alphabet.
std::vector<std::wstring> FilesIn(const std::wstring& folder, const std::wstring& extension);
// Makes the folder and copies files into it, not what is in folders among them. Throws
// std::runtime_error.
void CopyFiles(const std::wstring& from, const std::wstring& to);
// Removes a folder and all that is in it; links are removed, not followed.
void RemoveTree(const std::wstring& folder);
std::string ReadAll(const std::wstring& path);
bool WriteAll(const std::wstring& path, const std::string& bytes);

// Whether every program can use the path, whatever its code page: nothing but ASCII in it.
bool IsPlain(const std::wstring& path);
// The path itself when it is plain, else its short form when it has a plain one, else nothing.
std::wstring PlainForm(const std::wstring& path);
} // namespace selftest
