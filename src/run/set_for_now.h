#pragma once

#include <type_traits>

namespace quellix {

// An option that is another one until this goes out of scope.
template <typename Option>
class SetForNow {
 public:
  SetForNow(Option& option, std::type_identity_t<Option> value) : option_(option), before_(option) {
    option_ = value;
  }
  ~SetForNow() { option_ = before_; }
  SetForNow(const SetForNow&) = delete;
  SetForNow& operator=(const SetForNow&) = delete;

 private:
  Option& option_;
  const Option before_;
};

}  // namespace quellix
