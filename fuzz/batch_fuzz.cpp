// Any bytes as orvo batch input, through the same code orvo runs: every line gets exactly one
// answer line, a result or a numbered error; never a crash, a hang on nesting or on a special
// file, or an over-read. The scratch directory holds a FIFO and files whose names are not UTF-8
// ("\udce9" in a JSON string is the byte 0xE9 of a name), for the settings calls to meet.
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "cli.hpp"
#include "fuzz_input.hpp"

namespace {

bool isAnswerLine(const std::string& answer) {
  const bool shaped =
      answer.rfind(R"({"result":)", 0) == 0 || answer.rfind(R"({"error":{)", 0) == 0;
  return shaped && answer.back() == '}' && answer.find('\n') == std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // Members that touch files must find a scratch directory, not the repository.
  char dir[] = "/tmp/orvo_batch_fuzz_XXXXXX";
  if (::mkdtemp(dir) == nullptr || ::chdir(dir) != 0) std::abort();
  if (::mkfifo("fifo.ini", 0600) != 0 || ::mkfifo("caf\xe9.fifo", 0600) != 0) std::abort();
  std::FILE* latin1 = std::fopen("caf\xe9.ini", "wb");
  if (latin1 == nullptr) std::abort();
  std::fputs("[S]\r\nK=v\r\n", latin1);
  std::fclose(latin1);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input(reinterpret_cast<const char*>(data), size);
  if (orvo::fuzz::touchesFiles(input)) return 0;
  orvo::cli::ObjectTable objects;  // one batch: handles from earlier lines are valid later
  while (true) {
    const std::size_t end = input.find('\n');
    const std::string_view line = input.substr(0, end);
    // The class named after escapes are read, too.
    try {
      const auto request = orvo::cli::parseBatchLine(line, objects);
      if (request.call && orvo::fuzz::touchesFiles(orvo::toUtf8(*request.call))) return 0;
    } catch (const orvo::Error&) {  // NOLINT(bugprone-empty-catch): answered below
    }
    const std::string answer = orvo::cli::batchLine(line, objects);
    if (!isAnswerLine(answer)) __builtin_trap();
    if (end == std::string_view::npos) break;
    input.remove_prefix(end + 1);
  }
  return 0;
}
