// A new, empty folder for a test; removed afterwards with all that is in it.
#pragma once

#include <string>

class TempFolder
{
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // Full path, without a trailing separator.
    const std::string& Path() const { return m_path; }
    // Full path of something in the folder.
    std::string operator/(const std::string& name) const { return m_path + "\\" + name; }

    // Makes a folder inside, and those that lead to it; returns its full path.
    std::string MakeFolder(const std::string& name) const;
    // Names of what is in the folder, as "a.txt|b" in the order of the bytes.
    std::string Listing() const { return Listing(m_path); }
    static std::string Listing(const std::string& folder);

private:
    std::string m_path;
};

// The whole file as bytes; "(unreadable)" when it cannot be read.
std::string ReadBytes(const std::string& path);
// Makes or replaces a file.
void WriteBytes(const std::string& path, const std::string& bytes);
bool Exists(const std::string& path);
