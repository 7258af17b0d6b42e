#include <cstdio>
#include <cstdlib>
#include <numeric>

#include "fake/call.h"
#include "platform/msi.h"

namespace {

constexpr DWORD kBadQuery = 1615;
constexpr DWORD kFunctionFailed = 1627;

void PutText(const std::string &text, char *buffer, DWORD *length) {
  Require(buffer == nullptr || length != nullptr, ERROR_INVALID_PARAMETER);
  DWORD unwanted = 0;
  const DWORD capacity = std::exchange(length != nullptr ? *length : unwanted, static_cast<DWORD>(text.size()));
  if (buffer != nullptr) {
    Fill(buffer, capacity, text);
    Require(text.size() < capacity, ERROR_MORE_DATA);
  }
}

std::string TextOf(const Cell &cell) {
  Require(!std::holds_alternative<Bytes>(cell), ERROR_INVALID_PARAMETER);
  const int *number = std::get_if<int>(&cell);
  const std::string *text = std::get_if<std::string>(&cell);
  return number != nullptr ? std::to_string(*number) : text != nullptr ? *text : "";
}

template <typename Map>
auto &Known(Map &map, LPCSTR name, DWORD unknown) {
  Require(name != nullptr, ERROR_INVALID_PARAMETER);
  const auto entry = map.find(name);
  Require(entry != map.end(), unknown);
  return entry->second;
}

/// Checks the session of a call that a deferred action cannot make.
void RequireImmediate(const World &world, MSIHANDLE session) {
  Require(session == kSession && !world.Deferred(), ERROR_INVALID_HANDLE);
}

UINT GetState(const char *call, std::map<std::string, InstallState> World::*states, DWORD unknown, MSIHANDLE session,
              LPCSTR name, INSTALLSTATE *installed, INSTALLSTATE *action) {
  return CodedCall(call, [&](World &world) {
    RequireImmediate(world, session);
    const InstallState &state = Known(world.*states, name, unknown);
    Require(installed != nullptr && action != nullptr, ERROR_INVALID_PARAMETER);
    *installed = state.installed;
    *action = state.action;
  });
}

UINT SetField(const char *call, MSIHANDLE record, UINT field, const Cell &cell) {
  return CodedCall(call, [&](World &world) {
    Row &fields = world.Object(record, "record").fields;
    Require(field < fields.size(), ERROR_INVALID_PARAMETER);
    fields[field] = cell;
  });
}

std::size_t ColumnOf(const Table &table, const std::string &column) {
  const auto place = std::find(table.columns.begin(), table.columns.end(), column);
  Require(place != table.columns.end(), kBadQuery);
  return static_cast<std::size_t>(place - table.columns.begin());
}

}  // namespace

extern "C" {

UINT MsiCloseHandle(MSIHANDLE handle) {
  return TheWorld().Close("MsiCloseHandle", handle, {"record", "view", "database"});
}

UINT MsiGetPropertyA(MSIHANDLE session, LPCSTR name, LPSTR buffer, DWORD *length) {
  return CodedCall("MsiGetPropertyA", [&](World &world) {
    Require(session == kSession, ERROR_INVALID_HANDLE);
    Require(name != nullptr, ERROR_INVALID_PARAMETER);
    const auto property = world.properties.find(name);
    const bool hidden = world.Deferred() && std::strcmp(name, "CustomActionData") != 0;
    PutText(hidden || property == world.properties.end() ? "" : property->second, buffer, length);
  });
}

UINT MsiSetPropertyA(MSIHANDLE session, LPCSTR name, LPCSTR value) {
  return CodedCall("MsiSetPropertyA", [&](World &world) {
    Require(session == kSession, ERROR_INVALID_HANDLE);
    Require(name != nullptr && *name != '\0', ERROR_INVALID_PARAMETER);
    Require(!world.Deferred(), kFunctionFailed);
    world.properties[name] = OrEmpty(value);
    std::erase_if(world.properties, [](const auto &property) { return property.second.empty(); });
  });
}

BOOL MsiGetMode(MSIHANDLE session, MSIRUNMODE mode) {
  return Call("MsiGetMode", FALSE, [&](World &world) {
    Require(session == kSession, ERROR_INVALID_HANDLE);
    const bool visible = !world.Deferred() || mode >= MSIRUNMODE_SCHEDULED;
    return visible && world.modes.count(mode) ? TRUE : FALSE;
  });
}

int MsiProcessMessage(MSIHANDLE session, INSTALLMESSAGE type, MSIHANDLE record) {
  return Call("MsiProcessMessage", -1, [&](World &world) {
    Require(session == kSession, ERROR_INVALID_HANDLE);
    const Message message{type, world.Object(record, "record").fields};
    world.messages.push_back(message);
    if (type == INSTALLMESSAGE_INFO && message.fields.size() > 1) {
      world.installerLog.push_back(TextOf(message.fields[1]));
    }
    if (world.onMessage) {
      world.onMessage(message);
    }
    return world.messageAnswer;
  });
}

UINT MsiSetFeatureStateA(MSIHANDLE session, LPCSTR feature, INSTALLSTATE state) {
  return CodedCall("MsiSetFeatureStateA", [&](World &world) {
    RequireImmediate(world, session);
    Known(world.features, feature, 1606).action = state;
  });
}

UINT MsiSetInstallLevel(MSIHANDLE session, int level) {
  return CodedCall("MsiSetInstallLevel", [&](World &world) {
    RequireImmediate(world, session);
    Require(level > 0, ERROR_INVALID_PARAMETER);
    world.installLevels.push_back(level);
  });
}

UINT MsiGetFeatureStateA(MSIHANDLE session, LPCSTR feature, INSTALLSTATE *installed, INSTALLSTATE *action) {
  return GetState("MsiGetFeatureStateA", &World::features, 1606, session, feature, installed, action);
}

UINT MsiGetComponentStateA(MSIHANDLE session, LPCSTR component, INSTALLSTATE *installed, INSTALLSTATE *action) {
  return GetState("MsiGetComponentStateA", &World::components, 1607, session, component, installed, action);
}

UINT MsiGetSourcePathA(MSIHANDLE session, LPCSTR folder, LPSTR buffer, DWORD *length) {
  return CodedCall("MsiGetSourcePathA", [&](World &world) {
    RequireImmediate(world, session);
    PutText(Known(world.sourcePaths, folder, ERROR_DIRECTORY), buffer, length);
  });
}

MSIHANDLE MsiCreateRecord(UINT fields) {
  return Call("MsiCreateRecord", MSIHANDLE{0}, [&](World &world) {
    OpenObject record("record");
    record.fields.resize(fields + 1);
    return world.Open(std::move(record));
  });
}

UINT MsiRecordSetStringA(MSIHANDLE record, UINT field, LPCSTR value) {
  return SetField("MsiRecordSetStringA", record, field, OrEmpty(value).empty() ? Cell{} : Cell{value});
}

UINT MsiRecordSetInteger(MSIHANDLE record, UINT field, int value) {
  return SetField("MsiRecordSetInteger", record, field, value == MSI_NULL_INTEGER ? Cell{} : Cell{value});
}

UINT MsiRecordGetStringA(MSIHANDLE record, UINT field, LPSTR buffer, DWORD *length) {
  return CodedCall("MsiRecordGetStringA", [&](World &world) {
    const Row &fields = world.Object(record, "record").fields;
    PutText(field < fields.size() ? TextOf(fields[field]) : "", buffer, length);
  });
}

int MsiRecordGetInteger(MSIHANDLE record, UINT field) {
  return Call("MsiRecordGetInteger", MSI_NULL_INTEGER, [&](World &world) {
    const Row &fields = world.Object(record, "record").fields;
    Require(field < fields.size(), ERROR_INVALID_PARAMETER);
    const std::string text = TextOf(fields[field]);
    char *end = nullptr;
    const long number = std::strtol(text.c_str(), &end, 10);
    return text.empty() || *end != '\0' ? MSI_NULL_INTEGER : static_cast<int>(number);
  });
}

UINT MsiRecordReadStream(MSIHANDLE record, UINT field, char *buffer, DWORD *length) {
  return CodedCall("MsiRecordReadStream", [&](World &world) {
    OpenObject &object = world.Object(record, "record");
    Require(field < object.fields.size() && length != nullptr, ERROR_INVALID_PARAMETER);
    const Bytes *bytes = std::get_if<Bytes>(&object.fields[field]);
    Require(bytes != nullptr, 1804);
    std::size_t &read = object.streamRead[field];
    const std::size_t left = bytes->size() - read;
    const DWORD capacity = std::exchange(*length, static_cast<DWORD>(left));
    if (buffer != nullptr) {
      *length = std::min(*length, capacity);
      std::memset(buffer, kJunk, capacity);
      std::copy_n(bytes->begin() + static_cast<std::ptrdiff_t>(read), *length, buffer);
      read += *length;
    }
  });
}

MSIHANDLE MsiGetActiveDatabase(MSIHANDLE session) {
  return Call("MsiGetActiveDatabase", MSIHANDLE{0}, [&](World &world) {
    RequireImmediate(world, session);
    return world.Open(OpenObject("database"));
  });
}

UINT MsiDatabaseOpenViewA(MSIHANDLE database, LPCSTR query, MSIHANDLE *view) {
  return CodedCall("MsiDatabaseOpenViewA", [&](World &world) {
    world.Object(database, "database");
    Require(query != nullptr && view != nullptr, ERROR_INVALID_PARAMETER);
    char column[512] = "", table[512] = "", where[512] = "", value[512] = "";
    const int parts =
        std::sscanf(query, "SELECT %511s FROM %511s WHERE %511[^= ]%*[ =]'%511[^']'", column, table, where, value);
    const auto entry = world.tables.find(table);
    Require(parts >= 2 && entry != world.tables.end(), kBadQuery);
    OpenObject object("view", table);
    object.columns.resize(*column == '*' ? entry->second.columns.size() : 1);
    std::iota(object.columns.begin(), object.columns.end(), *column == '*' ? 0 : ColumnOf(entry->second, column));
    if (parts > 2) {
      object.where = {ColumnOf(entry->second, where), value};
    }
    *view = static_cast<MSIHANDLE>(world.Open(std::move(object)));
  });
}

UINT MsiViewExecute(MSIHANDLE view, MSIHANDLE) {
  return CodedCall("MsiViewExecute", [&](World &world) {
    world.Object(view, "view").executed = true;
    world.Object(view, "view").next = 0;
  });
}

UINT MsiViewFetch(MSIHANDLE view, MSIHANDLE *record) {
  return CodedCall("MsiViewFetch", [&](World &world) {
    OpenObject &object = world.Object(view, "view");
    Require(record != nullptr, ERROR_INVALID_PARAMETER);
    Require(object.executed, kFunctionFailed);
    const Table &table = world.tables[object.name];
    while (object.next < table.rows.size()) {
      const Row &row = table.rows[object.next++];
      if (!object.where || row.at(object.where->first) == Cell{object.where->second}) {
        OpenObject fetched("record");
        fetched.fields.resize(1);
        for (const std::size_t column : object.columns) {
          fetched.fields.push_back(row.at(column));
        }
        *record = static_cast<MSIHANDLE>(world.Open(std::move(fetched)));
        return;
      }
    }
    throw Failure{ERROR_NO_MORE_ITEMS};
  });
}

UINT MsiViewModify(MSIHANDLE view, MSIMODIFY mode, MSIHANDLE record) {
  return CodedCall("MsiViewModify", [&](World &world) {
    const OpenObject &object = world.Object(view, "view");
    const Row &fields = world.Object(record, "record").fields;
    Table &table = world.tables[object.name];
    Require(mode == MSIMODIFY_INSERT_TEMPORARY, ERROR_INVALID_PARAMETER);
    Require(fields.size() > table.columns.size(), kFunctionFailed);
    const Row row(fields.begin() + 1, fields.begin() + 1 + static_cast<std::ptrdiff_t>(table.columns.size()));
    Require(table.keys <= row.size(), kFunctionFailed);
    const auto keysEnd = row.begin() + static_cast<std::ptrdiff_t>(table.keys);
    for (const Row &other : table.rows) {
      Require(!std::equal(row.begin(), keysEnd, other.begin()), kFunctionFailed);
    }
    Require(std::find(row.begin(), keysEnd, Cell{}) == keysEnd, kFunctionFailed);
    table.rows.push_back(row);
    world.temporaryRows[object.name].push_back(row);
  });
}

UINT MsiViewClose(MSIHANDLE view) {
  return CodedCall("MsiViewClose", [&](World &world) { world.Object(view, "view").executed = false; });
}

UINT MsiEnumRelatedProductsA(LPCSTR upgradeCode, DWORD reserved, DWORD index, LPSTR product) {
  return CodedCall("MsiEnumRelatedProductsA", [&](World &world) {
    Require(OrEmpty(upgradeCode).size() == 38 && reserved == 0 && product != nullptr, ERROR_INVALID_PARAMETER);
    const auto products = world.relatedProducts.find(upgradeCode);
    Require(products != world.relatedProducts.end() && index < products->second.size(), ERROR_NO_MORE_ITEMS);
    Fill(product, 39, products->second[index]);
  });
}

UINT MsiGetProductInfoA(LPCSTR product, LPCSTR attribute, LPSTR buffer, DWORD *length) {
  return CodedCall("MsiGetProductInfoA", [&](World &world) {
    auto &info = Known(world.productInfo, product, 1605);
    PutText(Known(info, attribute, 1608), buffer, length);
  });
}

}  // extern "C"
