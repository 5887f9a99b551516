// Texts as instruments, spreadsheets and old computers write them, brought to UTF-8 with plain line ends.
#pragma once

#include <string>
#include <string_view>

namespace tools {

/// What decodeText() changed, in words for a note; empty when the text was plain already.
struct Decoded {
  std::string text;
  std::string changes;
};

/// UTF-16 (either byte order, with a byte order mark or recognised by its zero bytes) becomes UTF-8, a UTF-8
/// byte order mark goes, and line ends of any system (LF, CR LF, CR CR LF, CR) become LF.
Decoded decodeText(std::string bytes);

/// Why a file that begins so is no text, in words (compressed, a spreadsheet, zero bytes); empty when it may
/// be one.
std::string binaryComplaint(std::string_view beginning);

}  // namespace tools
