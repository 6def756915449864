// Confinement: walls around a child process that handles what cannot be trusted. Limits are set
// before its program is run; file access, system calls and privileges are taken by the child
// itself. All of it holds for the rest of the process and can only get tighter.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace engine {

struct ProcessLimits {
  std::uint64_t memoryBytes;  // address space
  unsigned seconds;           // processor time
};

// Limits on memory, processor time, descriptors, new processes, core dumps and files written. Never
// raises a limit that is tighter already. May be called between fork and exec.
void SetProcessLimits(const ProcessLimits& limits);
// The limit on memory that this process has, in bytes; the largest number where it has none.
std::uint64_t MemoryLimit();

// From now on files can be opened below `folders` only, and for reading only; where the kernel
// knows how, nothing can be cut short, no network reached and no process outside signalled either.
// False where the kernel has no means for it (Landlock): nothing is confined then.
bool AllowReadingOnly(const std::vector<std::string>& folders);

// Gives up what a superuser may do, but for reading files of others, which the folders confine.
void DropPrivileges();

// From now on this process can compute, take memory, read what it may open, and write to what is
// open: every other system call fails. No sockets, no processes or threads, no programs, no signals
// but to itself, no code made in memory, no change to a file or its rights, no look at what a path
// leads to. `areFilesConfined`: as AllowReadingOnly answered. False where the kernel has no means
// for it (seccomp): nothing is confined then.
bool AllowComputingOnly(bool areFilesConfined);

}  // namespace engine
