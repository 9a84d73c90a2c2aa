#include "orvogeneric/error.hpp"

#include <string>

namespace orvo {

Error::Error(std::int32_t number, String description, String source)
    : number_(number),
      description_(std::move(description)),
      source_(std::move(source)),
      what_(std::to_string(number) + ": " + toUtf8(description_)) {}

}  // namespace orvo
