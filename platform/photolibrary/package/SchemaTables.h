#pragma once

/// The tables of each database as a short text, which Schema reads. A table begins at the margin:
///
///     Name[+] column:type … / index …
///
/// Types: v varchar, i integer, d decimal, t timestamp, b blob, key varchar primary key. Each table
/// without a key of its own begins with "modelId integer primary key". "+" says that a table
/// Name_RidIndexes goes with it. An index is its columns with commas between; "!" makes it unique.
namespace SchemaTables
{

[[nodiscard]] const char* library();
[[nodiscard]] const char* properties();
[[nodiscard]] const char* imageProxies();
[[nodiscard]] const char* bigBlobs();
[[nodiscard]] const char* faces();
[[nodiscard]] const char* history();
[[nodiscard]] const char* sharingActivity();
[[nodiscard]] const char* projects();

} // namespace SchemaTables
