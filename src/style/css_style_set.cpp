#include "htcore/style/css_style_set.h"

#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_tokenizer.h"
#include "htcore/style/measure.h"

#include <algorithm>

namespace ht {

namespace {

// Names are CSS names: trimmed and ASCII lower case, so that "Color" and
// "color" are one entry.
hstring NormName(const hstring& Name) {
  hstring n = Trim(Name);
  for (char16_t c : n.view())
    if (c >= u'A' && c <= u'Z')
      return LowerCase(n.view());
  return n;
}

// Merges Other (sorted, one entry per name) into Items in one walk, so that
// adding many names costs n log n rather than an insertion each.
void MergeSorted(std::vector<TCSSStyleSetRec>& Items, const std::vector<TCSSStyleSetRec>& Other,
                 bool Override) {
  std::vector<TCSSStyleSetRec> merged;
  merged.reserve(Items.size() + Other.size());
  size_t i = 0, j = 0;
  while (i < Items.size() || j < Other.size()) {
    if (j == Other.size() || (i < Items.size() && Items[i].Name.view() < Other[j].Name.view())) {
      merged.push_back(std::move(Items[i++]));
    } else if (i == Items.size() || Other[j].Name.view() < Items[i].Name.view()) {
      merged.push_back(Other[j++]);
    } else {
      merged.push_back(Override ? Other[j] : std::move(Items[i]));
      ++i;
      ++j;
    }
  }
  Items = std::move(merged);
}

} // namespace

bool TCSSStyleSet::Find(const hstring& Name, int& Index) const {
  auto it =
      std::lower_bound(Items.begin(), Items.end(), Name.view(),
                       [](const TCSSStyleSetRec& r, std::u16string_view n) { return r.Name.view() < n; });
  Index = static_cast<int>(it - Items.begin());
  return it != Items.end() && it->Name.view() == Name.view();
}

hstring TCSSStyleSet::GetValue(const hstring& Name) const {
  int i;
  return Find(NormName(Name), i) ? Items[static_cast<size_t>(i)].Value : hstring();
}

void TCSSStyleSet::SetValue(const hstring& Name, const hstring& Value) {
  if (Value.empty())
    Delete(Name);
  else
    AddValue(Name, Value);
}

bool TCSSStyleSet::HasProperty(const hstring& Name) const {
  int i;
  return Find(NormName(Name), i);
}

bool TCSSStyleSet::CheckValue(const hstring& Name, const hstring& Value) const {
  int i;
  return Find(NormName(Name), i) && Items[static_cast<size_t>(i)].Value == Value;
}

void TCSSStyleSet::Delete(const hstring& Name) {
  int i;
  if (Find(NormName(Name), i))
    Delete(i);
}

void TCSSStyleSet::Delete(int Index) {
  if (Index >= 0 && Index < Count())
    Items.erase(Items.begin() + Index);
}

void TCSSStyleSet::AddValue(const hstring& Name, const hstring& Value) {
  hstring n = NormName(Name);
  if (n.empty())
    return;
  int i;
  if (Find(n, i))
    Items[static_cast<size_t>(i)].Value = Value;
  else
    Items.insert(Items.begin() + i, TCSSStyleSetRec{n, Value});
}

void TCSSStyleSet::AddString(const hstring& Text) {
  std::vector<TCSSStyleSetRec> read;
  const char16_t* p = Text.c_str();
  const char16_t* const end = p + Text.size();
  while (p < end) {
    const char16_t* name = p;
    while (p < end && *p != u':' && *p != u';')
      ++p;
    if (p == end || *p == u';') { // a name without a value is dropped
      if (p < end)
        ++p;
      continue;
    }
    hstring n(name, static_cast<size_t>(p - name));
    const char16_t* value = ++p;
    char16_t quote = 0;
    int depth = 0; // a ";" inside url(...) or quotes belongs to the value
    for (; p < end; ++p) {
      const char16_t c = *p;
      if (quote) {
        if (c == quote)
          quote = 0;
        else if (c == u'\\' && p + 1 < end)
          ++p;
      } else if (c == u'"' || c == u'\'') {
        quote = c;
      } else if (c == u'(') {
        ++depth;
      } else if (c == u')') {
        if (depth > 0)
          --depth;
      } else if (c == u';' && depth == 0) {
        break;
      }
    }
    hstring v = Trim(hstring(value, static_cast<size_t>(p - value)));
    if (p < end)
      ++p;
    n = NormName(n);
    if (!v.empty() && !n.empty())
      read.push_back({n, v});
  }
  // Sorted by name with the last declaration of a name kept.
  std::stable_sort(read.begin(), read.end(), [](const TCSSStyleSetRec& a, const TCSSStyleSetRec& b) {
    return a.Name.view() < b.Name.view();
  });
  std::vector<TCSSStyleSetRec> last;
  for (size_t i = 0; i < read.size(); ++i)
    if (i + 1 == read.size() || read[i + 1].Name != read[i].Name)
      last.push_back(std::move(read[i]));
  MergeSorted(Items, last, true);
}

void TCSSStyleSet::AddInherited(const TCSSStyleSet& Other) {
  if (&Other != this)
    MergeSorted(Items, Other.Items, false);
}

void TCSSStyleSet::AddOverride(const TCSSStyleSet& Other) {
  if (&Other != this)
    MergeSorted(Items, Other.Items, true);
}

void TCSSStyleSet::IntersectWith(const TCSSStyleSet& Other) {
  std::erase_if(Items, [&](const TCSSStyleSetRec& r) {
    int i;
    return Other.Find(r.Name, i) && Other.Items[static_cast<size_t>(i)].Value == r.Value;
  });
}

hstring TCSSStyleSet::GetAsString() const {
  TFastString fs(256);
  for (const TCSSStyleSetRec& r : Items)
    fs.Add(r.Name).AddChar(u':').Add(r.Value).AddChar(u';');
  return fs.ToString();
}

void TCSSStyleSet::SetAsString(const hstring& Text) {
  Clear();
  AddString(Text);
}

hstring TCSSStyleSet::AsStyleAttr() const {
  TFastString fs(256);
  for (size_t i = 0; i < Items.size(); ++i) {
    if (i)
      fs.Add(u"; ");
    fs.Add(Items[i].Name).Add(u": ").Add(Items[i].Value);
  }
  return fs.ToString();
}

float TCSSStyleSet::GetPixels(const hstring& Name) const {
  hstring v = GetValue(Name);
  if (v.empty())
    return 0;
  TCSSTokens tokens = CSSValueTokens(v);
  TCSSTokenSequence seq;
  seq.Init(&tokens);
  TMeasure m;
  m.Init(nullptr);
  m.Decode(seq);
  return m.GetFPixels();
}

} // namespace ht
