#pragma once

#include <cstdint>
#include <vector>

namespace ZkMobileBackup {

// One database per application, as the phone keeps them: real SQLite files with live rows, with rows that were deleted
// and whose bytes are still there, texts of many languages, emoji and line breaks. The same bytes at every call.

std::vector<std::uint8_t> sampleAddressBook();
std::vector<std::uint8_t> sampleMessages();
std::vector<std::uint8_t> sampleCallHistory();
/// Events and reminders.
std::vector<std::uint8_t> sampleCalendar();
std::vector<std::uint8_t> sampleNotes();
std::vector<std::uint8_t> sampleBookmarks();
std::vector<std::uint8_t> sampleVoicemail();
std::vector<std::uint8_t> samplePhotoLibrary();

}  // namespace ZkMobileBackup
