#include "screen_reader.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <oleacc.h>

#include "window_input.h"

namespace quellix::test {
namespace {

struct Kind {
  const wchar_t* name;  // of the class
  bool says_its_text;
  LONG role;
};
constexpr Kind kKinds[] = {{L"Button", true, ROLE_SYSTEM_PUSHBUTTON},
                           {L"Static", true, ROLE_SYSTEM_STATICTEXT},
                           {L"SysLink", true, ROLE_SYSTEM_LINK},
                           {L"Edit", false, ROLE_SYSTEM_TEXT},
                           {L"ComboBox", false, ROLE_SYSTEM_COMBOBOX},
                           {L"ListBox", false, ROLE_SYSTEM_LIST},
                           {L"SysListView32", false, ROLE_SYSTEM_LIST},
                           {L"SysTabControl32", false, ROLE_SYSTEM_PAGETABLIST},
                           {L"SysDateTimePick32", false, ROLE_SYSTEM_DROPLIST},
                           {L"msctls_progress32", false, ROLE_SYSTEM_PROGRESSBAR}};

const Kind* KindOf(HWND control) {
  const auto kind = std::ranges::find_if(
      kKinds, [control](const Kind& each) { return IsOfClass(control, each.name); });
  EXPECT_NE(kind, std::end(kKinds)) << "a control of another kind";
  return kind == std::end(kKinds) ? nullptr : kind;
}

LONG RoleOf(HWND control, const Kind& kind) {
  if (kind.role != ROLE_SYSTEM_PUSHBUTTON) return kind.role;
  switch (GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK) {
    case BS_AUTOCHECKBOX:
    case BS_AUTO3STATE:
      return ROLE_SYSTEM_CHECKBUTTON;
    case BS_AUTORADIOBUTTON:
      return ROLE_SYSTEM_RADIOBUTTON;
    case BS_GROUPBOX:
      return ROLE_SYSTEM_GROUPING;
    default:
      return kind.role;
  }
}

std::wstring WithoutLetter(std::wstring text) {
  const size_t letter = text.find(L'&');
  return letter == text.npos ? text : text.erase(letter, 1);
}

// A label whose text comes later, or a picture.
bool MayBeSilent(HWND control) { return IsOfClass(control, L"Static") && TextOf(control).empty(); }

template <typename Check>
void ForEachControl(HWND window, const Check& check) {
  for (HWND at = GetWindow(window, GW_CHILD); at; at = GetWindow(at, GW_HWNDNEXT)) {
    wchar_t name[50] = {};
    GetClassNameW(at, name, 50);
    SCOPED_TRACE(testing::PrintToString(std::wstring(name)) + " " +
                 std::to_string(GetDlgCtrlID(at)) + " of " +
                 testing::PrintToString(TextOf(window)));
    IsOfClass(at, L"#32770") ? ForEachControl(at, check) : check(at);
  }
}

// The object of a control in the system's accessibility, null for none.
struct Accessible {
  explicit Accessible(HWND control) {
    AccessibleObjectFromWindow(control, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                               reinterpret_cast<void**>(&object));
    self.vt = VT_I4;
  }
  ~Accessible() {
    if (object) object->Release();
  }
  Accessible(const Accessible&) = delete;
  Accessible& operator=(const Accessible&) = delete;

  LONG Role() const {
    VARIANT role{};
    return object && SUCCEEDED(object->get_accRole(self, &role)) ? role.lVal : 0;
  }
  std::wstring Name() const {
    BSTR name = nullptr;
    if (object) object->get_accName(self, &name);
    const std::wstring text = name ? name : L"";
    SysFreeString(name);
    return text;
  }

  IAccessible* object = nullptr;
  VARIANT self{};
};

}  // namespace

std::wstring SpokenName(HWND control) {
  const Kind* const kind = KindOf(control);
  if (kind && kind->says_its_text) return WithoutLetter(TextOf(control));
  const HWND before = GetWindow(control, GW_HWNDPREV);
  return before && IsOfClass(before, L"Static") ? WithoutLetter(TextOf(before)) : L"";
}

void ExpectNames(HWND window) {
  ForEachControl(window, [](HWND control) {
    const HWND before = GetWindow(control, GW_HWNDPREV);
    const bool comes_later = before && GetDlgCtrlID(before) != -1 && MayBeSilent(before);
    EXPECT_TRUE(MayBeSilent(control) || comes_later || !SpokenName(control).empty()) << "no name";
  });
}

void ExpectSpoken(HWND window) {
  ForEachControl(window, [](HWND control) {
    if (!IsWindowVisible(control) || MayBeSilent(control)) return;
    const Kind* const kind = KindOf(control);
    EXPECT_NE(SpokenName(control), L"");
    const Accessible object(control);
    ASSERT_TRUE(object.object);
    // A kind that the system knows nothing of is a mere area, with its own text for a name.
    const LONG role = object.Role();
    const bool is_known = role != ROLE_SYSTEM_CLIENT;
    EXPECT_TRUE(!is_known || !kind || role == RoleOf(control, *kind)) << role;
    if (!is_known && kind && !kind->says_its_text) return;
    EXPECT_EQ(object.Name(), SpokenName(control));
  });
}

}  // namespace quellix::test
