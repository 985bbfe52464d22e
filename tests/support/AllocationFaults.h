// AllocationFaults: lets what a module asks the system for run out at a chosen point: memory, its own
// heap, thread-local slots, activation contexts. Only for the thread that made the object, and only
// between Arm and Disarm.
#pragma once

#include "tests/support/ImportPatch.h"

#include <memory>
#include <vector>

class AllocationFaults
{
public:
    enum class After
    {
        Recovers, // only the one request fails
        StaysOut  // all later ones fail as well
    };

    explicit AllocationFaults(HMODULE hModule);
    ~AllocationFaults();
    AllocationFaults(const AllocationFaults&) = delete;
    AllocationFaults& operator=(const AllocationFaults&) = delete;

    // Lets the n-th request from now on fail, counted from 1.
    void Arm(int n, After after);
    // Returns whether that request came.
    bool Disarm();

private:
    std::vector<std::unique_ptr<ImportPatch>> m_patches;
};
