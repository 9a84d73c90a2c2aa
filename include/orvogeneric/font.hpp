#pragma once

#include "orvogeneric/export.hpp"
#include "orvogeneric/types.hpp"
#include "orvogeneric/variant.hpp"

namespace orvo {

// A host's font, as ResourceManager.ModifyFontForLocale adapts it: a name, a size in points with
// four decimals, and boldness. A real font snaps a requested size to one it supports, so Size
// may read back other than it was set. Any other object with Name, Size and Bold properties
// in the automation registry serves too; it is reached by late binding.
class ORVO_API FontObject : public Object {
 public:
  [[nodiscard]] virtual String Name() = 0;
  virtual void Name(const String& value) = 0;
  [[nodiscard]] virtual Currency Size() = 0;
  virtual void Size(Currency value) = 0;
  [[nodiscard]] virtual VBool Bold() = 0;
  virtual void Bold(VBool value) = 0;
};

}  // namespace orvo
