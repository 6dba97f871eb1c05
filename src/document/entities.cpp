// The entity table and its two dictionaries.
#include "htcore/document/entities.h"

#include "document/htmlpars_start.h"
#include "htcore/foundation/startup.h"

#include <cstring>

namespace ht {

namespace {

struct TEntitySource {
  const char16_t* name;
  uint32_t code;
};

constexpr TEntitySource kEntitySource[] = {
#include "document/entity_data.inc"
};
static_assert(std::size(kEntitySource) == kHtEntityCount);

struct TEntityTables {
  THtEntityRec recs[kHtEntityCount];
  THtEntityDictionary by_name;
  THtEntityReverseDictionary by_code;
};

// Filled at start, read-only afterwards, freed at stop.
TEntityTables* g_tables = nullptr;

} // namespace

std::span<const THtEntityRec> HtEntityTable() {
  EnsureStarted();
  if (!g_tables)
    return {};
  return {g_tables->recs, static_cast<size_t>(kHtEntityCount)};
}

const THtEntityDictionary* HtEntityDictionary() {
  EnsureStarted();
  return g_tables ? &g_tables->by_name : nullptr;
}

const THtEntityReverseDictionary* HtEntityReverseDictionary() {
  EnsureStarted();
  return g_tables ? &g_tables->by_code : nullptr;
}

uint32_t FindEntity(const char16_t* p, int Len) {
  EnsureStarted();
  return g_tables ? g_tables->by_name.FindEntity(p, Len) : 0;
}

const THtEntityRec* FindEntity(uint32_t c) {
  EnsureStarted();
  return g_tables ? g_tables->by_code.FindEntity(c) : nullptr;
}

namespace detail {

void BuildEntityDictionaries() {
  auto* t = new TEntityTables;
  for (int i = 0; i < kHtEntityCount; ++i) {
    t->recs[i] = {hstring(kEntitySource[i].name), kEntitySource[i].code};
    t->by_name.AddPointer(&t->recs[i]);
    t->by_code.AddRec(&t->recs[i]);
  }
  g_tables = t;
}

void FreeEntityTables() {
  delete g_tables;
  g_tables = nullptr;
}

} // namespace detail

} // namespace ht
