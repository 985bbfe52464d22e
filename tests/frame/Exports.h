// The seven functions, to be called in two ways: from the DLL, and linked into this program, where
// program and library share one framework and the module state can be seen to switch. With the
// situations in which they end in different ways.
#pragma once

#include "tests/support/Host.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/RegistrySandbox.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

enum class Form
{
    Loaded, // from the DLL
    Linked  // into this program
};

// For the names of tests.
inline std::string FormName(const testing::TestParamInfo<Form>& tested)
{
    return tested.param == Form::Loaded ? "Loaded" : "Linked";
}

// The library in one of its forms.
class Library
{
public:
    explicit Library(Form form);

    bool IsComplete() const { return m_pLoaded == nullptr || m_pLoaded->IsComplete(); }
    HMODULE Module() const; // whose import table counts

    int (*DoWaitDlgModless)(HWND, const char*, const char*);
    int (*CloseWaitDlg)();
    int (*DoFileOpenDialog)(char*, char*, const char*, const char*, char*);
    int (*FileCopy)(const char*, const char*);
    int (*PutInRunOnce)(const char*, const char*);
    int (*VerifyEmail)(char*, int*, char*);
    int (*Write_ch_config_File)(const char*);

private:
    std::unique_ptr<LoadedTarn> m_pLoaded;
};

// One call of one export and the way it must end.
struct Situation
{
    const char* pszSentence;
    std::function<int(const Library&)> call;
    Left left;
    int nResult;
    // The system function that is replaced meanwhile, if any.
    const char* pszPatched = nullptr;
    void* pReplacement = nullptr;
};

// What the replaced functions saw of the state that the library runs in.
struct Inside
{
    int nCalls = 0;
    HANDLE hContext = nullptr;
    AFX_MODULE_STATE* pModuleState = nullptr;
    std::string caption; // of a message box
};
extern Inside g_inside;

// Files that the situations use.
class Files
{
public:
    Files();
    std::string source;       // a file
    std::string destination;  // a folder, with its separator
    std::string installation; // a folder with embedch\config
    std::string notInstalled; // one without

private:
    TempFolder m_folder;
    RegistrySandbox m_registry; // with the key for commands
};

std::vector<Situation> AllSituations(const Files& files);
