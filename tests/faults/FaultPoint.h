#pragma once

#include <sys/types.h>

#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <mutex>

/// One use of a system call that changes files, below the folders that the driver of the fault ring
/// watches. Points are counted from 1 in the order in which they are reached, over all threads. At
/// one of them the plan lets the call fail or ends the process.
///
/// The plan is in the environment:
///   CORVANE_FAULTS_BELOW   absolute folders, separated by ':'; without any nothing is watched
///   CORVANE_FAULTS_AT      number of the point at which it happens; none without
///   CORVANE_FAULTS_KIND    "kill", "torn" (a part of the bytes is written, then kill) or an errno
///   CORVANE_FAULTS_STAYS   set: calls after the point fail as well
///   CORVANE_FAULTS_HIT     file that gets a line when it happened
///   CORVANE_FAULTS_RECORD  file that gets each point with what it changed
///
/// Nothing here allocates memory: calls may come from anywhere.

/// An absolute path, as text; empty where it cannot be told.
struct FaultPath {
    std::array<char, PATH_MAX> text{};

    /// `name`, relative to the folder `descriptor` unless it is absolute.
    [[nodiscard]] static FaultPath of(int descriptor, const char* name);
    /// The file that is open under that number.
    [[nodiscard]] static FaultPath of(int descriptor);
};

/// What a call did, as the recording tells it.
enum class FaultEffect : std::uint32_t {
    None,
    MakeFile,     ///< an empty one
    Truncate,     ///< to `offset` bytes
    Write,        ///< data at `offset`
    WholeFile,    ///< data is all that is in it
    FlushFile,    //
    FlushFolder,  //
    Rename,       ///< to `other`
    Link,         ///< `other` is the new name
    Remove,       ///< of a file or a link
    MakeFolder,   //
    RemoveFolder, //
    SymbolicLink, ///< `other` is what it leads to
    Exchange,     ///< with `other`
    FlushAll,     ///< everything on the disk
};

/// Which errors a call can meet beside EIO and EROFS.
enum FaultAbility : std::uint32_t {
    kFaultOfSpace = 1, ///< ENOSPC, EDQUOT
    kFaultOfName = 2,  ///< EACCES
};

/// In scope while a call is made; holds all other points back.
class FaultPoint final
{
public:
    FaultPoint(const char* call, const FaultPath& path, std::uint32_t abilities);
    ~FaultPoint();
    FaultPoint(const FaultPoint&) = delete;
    FaultPoint& operator=(const FaultPoint&) = delete;

    /// Whether the call has to fail; errno is set.
    [[nodiscard]] bool fails() const;
    /// How many of the bytes a call writes may be written. Fewer than all of them: the process is
    /// to be ended after it (see `written`), or the call to return that count.
    [[nodiscard]] std::size_t share(std::size_t bytes) const;
    /// After a write: where the plan says so, the process ends here.
    void written() const;

    /// The call changed this open file.
    void changed(int file) const;
    /// What the call did; without it, it did nothing.
    void did(FaultEffect effect);
    void did(FaultEffect effect, const FaultPath& other);
    void did(FaultEffect effect, off_t offset, const void* data, std::size_t bytes);
    /// The descriptor's file holds, from `offset` on, what it holds.
    void didCopy(FaultEffect effect, int descriptor, off_t offset, std::size_t bytes);

private:
    void record(const void* data, std::size_t bytes);

    std::unique_lock<std::mutex> m_lock; ///< held by a watched point only
    const char* m_call;
    const FaultPath& m_path;
    std::uint32_t m_abilities;
    bool m_hit{false};
    bool m_after{false};
    bool m_recorded{false};
    FaultEffect m_effect{FaultEffect::None};
    const FaultPath* m_other{nullptr};
    off_t m_offset{0};
};
