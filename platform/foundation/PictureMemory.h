#pragma once

/// Where a process that converts pictures has the memory for them.
namespace PictureMemory
{

/// Lets blocks of any size come from one heap that keeps what was given back for the next picture,
/// and asks the system for huge pages there: the system then clears and maps far fewer pages for
/// each picture. For a process that ends when its pictures are done, before it starts threads.
/// Where the system has no such memory, nothing is different.
void prepare() noexcept;

} // namespace PictureMemory
