#include "platform/registry.h"

namespace quellix {

bool RegistryKey::ReadValueAt(uint32_t index, std::string& name, RegistryValue& value) {
  const std::optional<RegistryValueInfo> info = ValueAt(index);
  if (!info) return false;
  name = info->name;
  value = QueryValue(name).value_or(RegistryValue{info->type, {}});
  return true;
}

}  // namespace quellix
