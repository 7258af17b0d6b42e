#include <cstdio>
#include <cstdlib>

#include "fake/call.h"
#include "platform/msi.h"

namespace {

constexpr DWORD kBadQuery = 1615;
constexpr DWORD kFunctionFailed = 1627;

void PutText(const std::string &text, char *buffer, DWORD *length) {
  const DWORD capacity = std::exchange(*length, static_cast<DWORD>(text.size()));
  Fill(buffer, capacity, text);
  Require(text.size() < capacity, ERROR_MORE_DATA);
}

std::string TextOf(const Cell &cell) {
  Require(!std::holds_alternative<Bytes>(cell), ERROR_INVALID_PARAMETER);
  const int *number = std::get_if<int>(&cell);
  const std::string *text = std::get_if<std::string>(&cell);
  return number != nullptr ? std::to_string(*number) : text != nullptr ? *text : "";
}

void RequireSession(MSIHANDLE session) { Require(session == kSession, ERROR_INVALID_HANDLE); }

/// Checks the session of a call that a deferred action cannot make.
void RequireImmediate(MSIHANDLE session) { Require(session == kSession && !world.Deferred(), ERROR_INVALID_HANDLE); }

void GetState(std::map<std::string, InstallState> &states, DWORD unknown, MSIHANDLE session, LPCSTR name,
              INSTALLSTATE *installed, INSTALLSTATE *action) {
  RequireImmediate(session);
  *installed = *action = static_cast<INSTALLSTATE>(0);  // as the engine does for a name that it does not know
  const InstallState &state = Known(states, OrEmpty(name), unknown);
  *installed = state.installed;
  *action = state.action;
}

Cell &Field(MSIHANDLE record, UINT field) {
  Row &fields = world.Object(record, "record").fields;
  Require(field < fields.size(), ERROR_INVALID_PARAMETER);
  return fields[field];
}

std::size_t ColumnOf(const Table &table, const std::string &column) {
  const auto place = std::find(table.columns.begin(), table.columns.end(), column);
  Require(place != table.columns.end(), kBadQuery);
  return static_cast<std::size_t>(place - table.columns.begin());
}

/// A table of the database, or the one of their names.
Table TableOf(const std::string &name) {
  Table names{{"Name"}, {}};
  for (const auto &[table, content] : world.tables) {
    names.rows.push_back({table});
  }
  return name == "_Tables" ? names : Known(world.tables, name, kBadQuery);
}

}  // namespace

UINT MsiCloseHandle(MSIHANDLE handle) { return world.Close(handle, {"record", "view", "database", "summary"}); }

UINT MsiGetPropertyA(MSIHANDLE session, LPCSTR name, LPSTR buffer, DWORD *length) {
  return CodedCall([&] {
    RequireSession(session);
    world.See(name, {*length});
    const auto property = world.properties.find(name);
    const bool hidden = world.Deferred() && std::strcmp(name, "CustomActionData") != 0;
    PutText(hidden || property == world.properties.end() ? "" : property->second, buffer, length);
  });
}

UINT MsiSetPropertyA(MSIHANDLE session, LPCSTR name, LPCSTR value) {
  return CodedCall([&] {
    RequireSession(session);
    Require(*name != '\0', ERROR_INVALID_PARAMETER);
    Require(!world.Deferred(), kFunctionFailed);
    world.properties[name] = OrEmpty(value);
    std::erase_if(world.properties, [](const auto &property) { return property.second.empty(); });
  });
}

BOOL MsiGetMode(MSIHANDLE session, MSIRUNMODE mode) {
  return Call(FALSE, [&] {
    RequireSession(session);
    const bool visible = !world.Deferred() || mode >= MSIRUNMODE_SCHEDULED;
    return visible && world.modes.count(mode) ? TRUE : FALSE;
  });
}

int MsiProcessMessage(MSIHANDLE session, INSTALLMESSAGE type, MSIHANDLE record) {
  return Call(-1, [&] {
    RequireSession(session);
    const Row &fields = world.Object(record, "record").fields;
    world.messages.push_back({type, fields});
    if (type == INSTALLMESSAGE_INFO && fields.size() > 1) {
      world.installerLog.push_back(TextOf(fields[1]));
    }
    return 1;
  });
}

UINT MsiSetFeatureStateA(MSIHANDLE session, LPCSTR feature, INSTALLSTATE state) {
  return CodedCall([&] {
    RequireImmediate(session);
    Known(world.features, OrEmpty(feature), 1606).action = state;
  });
}

UINT MsiSetInstallLevel(MSIHANDLE session, int level) {
  return CodedCall([&] {
    RequireImmediate(session);
    Require(level > 0, ERROR_INVALID_PARAMETER);
    world.installLevels.push_back(level);
  });
}

UINT MsiGetFeatureStateA(MSIHANDLE session, LPCSTR feature, INSTALLSTATE *installed, INSTALLSTATE *action) {
  return CodedCall([&] { GetState(world.features, 1606, session, feature, installed, action); });
}

UINT MsiGetComponentStateA(MSIHANDLE session, LPCSTR component, INSTALLSTATE *installed, INSTALLSTATE *action) {
  return CodedCall([&] { GetState(world.components, 1607, session, component, installed, action); });
}

UINT MsiGetSourcePathA(MSIHANDLE session, LPCSTR folder, LPSTR buffer, DWORD *length) {
  return CodedCall([&] {
    RequireImmediate(session);
    world.See(OrEmpty(folder), {*length});
    PutText(Known(world.sourcePaths, OrEmpty(folder), ERROR_DIRECTORY), buffer, length);
  });
}

UINT MsiSetTargetPathA(MSIHANDLE session, LPCSTR folder, LPCSTR path) {
  return CodedCall([&] {
    RequireImmediate(session);
    Known(world.targetPaths, OrEmpty(folder), ERROR_DIRECTORY) = path;
    world.properties[folder] = path;
  });
}

MSIHANDLE MsiCreateRecord(UINT fields) {
  return Call(MSIHANDLE{0}, [&] { return world.Open({.kind = "record", .fields = Row(fields + 1)}); });
}

UINT MsiRecordSetStringA(MSIHANDLE record, UINT field, LPCSTR value) {
  return CodedCall([&] { Field(record, field) = OrEmpty(value).empty() ? Cell{} : Cell{value}; });
}

UINT MsiRecordSetInteger(MSIHANDLE record, UINT field, int value) {
  return CodedCall([&] { Field(record, field) = value == MSI_NULL_INTEGER ? Cell{} : Cell{value}; });
}

UINT MsiRecordGetStringA(MSIHANDLE record, UINT field, LPSTR buffer, DWORD *length) {
  return CodedCall([&] {
    world.See("", {*length});
    PutText(TextOf(Field(record, field)), buffer, length);
  });
}

int MsiRecordGetInteger(MSIHANDLE record, UINT field) {
  return Call(MSI_NULL_INTEGER, [&] {
    const std::string text = TextOf(Field(record, field));
    char *end = nullptr;
    const long number = std::strtol(text.c_str(), &end, 10);
    return text.empty() || *end != '\0' ? MSI_NULL_INTEGER : static_cast<int>(number);
  });
}

UINT MsiRecordReadStream(MSIHANDLE record, UINT field, char *buffer, DWORD *length) {
  return CodedCall([&] {
    const Bytes *bytes = std::get_if<Bytes>(&Field(record, field));
    world.See("", {*length});
    Require(bytes != nullptr, 1804);
    std::size_t &read = world.Object(record, "record").next;
    std::memset(buffer, kJunk, *length);
    *length = static_cast<DWORD>(std::min<std::size_t>(*length, bytes->size() - read));
    std::copy_n(bytes->data() + read, *length, buffer);
    read += *length;
  });
}

MSIHANDLE MsiGetActiveDatabase(MSIHANDLE session) {
  return Call(MSIHANDLE{0}, [&] {
    RequireImmediate(session);
    return world.Open({.kind = "database"});
  });
}

UINT MsiDatabaseOpenViewA(MSIHANDLE database, LPCSTR query, MSIHANDLE *view) {
  return CodedCall([&] {
    world.Object(database, "database");
    char column[512] = "", name[512] = "", where[512] = "", value[512] = "";
    const int parts =
        std::sscanf(query, "SELECT %511s FROM %511s WHERE %511[^= ]%*[ =]'%511[^']'", column, name, where, value);
    Require(parts == 2 || parts == 4, kBadQuery);
    const Table table = TableOf(name);
    const std::size_t selected = *column == '*' ? 0 : ColumnOf(table, column);
    const std::size_t compared = parts == 2 ? 0 : ColumnOf(table, where);
    const auto find = [=, all = *column == '*', table = std::string(name), text = Cell{std::string(value)}] {
      std::vector<Row> found;
      for (const Row &row : TableOf(table).rows) {
        if (parts == 2 || row.at(compared) == text) {
          found.push_back(all ? row : Row{row.at(selected)});
        }
      }
      return found;
    };
    *view = static_cast<MSIHANDLE>(world.Open({.kind = "view", .name = name, .find = find}));
  });
}

UINT MsiViewExecute(MSIHANDLE view, MSIHANDLE) {
  return CodedCall([&] {
    OpenObject &object = world.Object(view, "view");
    Require(!object.executed || object.next == object.rows.size(), kFunctionFailed);  // else it is to be closed first
    object.executed = true;
    object.next = 0;
    object.rows = object.find();
  });
}

UINT MsiViewFetch(MSIHANDLE view, MSIHANDLE *record) {
  return CodedCall([&] {
    OpenObject &object = world.Object(view, "view");
    Require(object.executed, kFunctionFailed);
    Require(object.next < object.rows.size(), ERROR_NO_MORE_ITEMS);
    Row fields = object.rows[object.next++];
    fields.insert(fields.begin(), Cell{});
    *record = static_cast<MSIHANDLE>(world.Open({.kind = "record", .fields = fields}));
  });
}

UINT MsiViewModify(MSIHANDLE view, MSIMODIFY mode, MSIHANDLE record) {
  return CodedCall([&] {
    OpenObject &object = world.Object(view, "view");
    std::vector<Row> &rows = world.tables[object.name].rows;
    const Row &fields = world.Object(record, "record").fields;
    const Row row(fields.begin() + 1, fields.end());
    if (mode == MSIMODIFY_DELETE) {
      const auto place = std::find(rows.begin(), rows.end(), row);
      Require(object.executed && place != rows.end(), kFunctionFailed);
      rows.erase(place);
      return;
    }
    Require(mode == MSIMODIFY_INSERT_TEMPORARY, ERROR_INVALID_PARAMETER);
    const Table &table = world.tables[object.name];
    Require(row.size() == table.columns.size() && row[0] != Cell{}, kFunctionFailed);
    const auto hasKey = [&](const Row &other) {
      return std::equal(row.begin(), row.begin() + table.keys, other.begin());
    };
    Require(std::none_of(rows.begin(), rows.end(), hasKey), kFunctionFailed);
    rows.push_back(row);
  });
}

UINT MsiViewClose(MSIHANDLE view) {
  return CodedCall([&] { world.Object(view, "view").executed = false; });
}

UINT MsiGetSummaryInformationA(MSIHANDLE database, LPCSTR path, UINT updates, MSIHANDLE *summary) {
  return CodedCall([&] {
    world.Object(database, "database");
    Require(path == nullptr && updates == 0, ERROR_INVALID_PARAMETER);
    *summary = static_cast<MSIHANDLE>(world.Open({.kind = "summary"}));
  });
}

UINT MsiSummaryInfoGetPropertyA(MSIHANDLE summary, UINT property, UINT *type, int *, FILETIME *time, LPSTR buffer,
                                DWORD *length) {
  return CodedCall([&] {
    world.Object(summary, "summary");
    world.See("", {property, *length});
    *type = property == 9 ? 30 : property == 12 && world.created ? 64 : 0;
    if (*type == 30) {
      PutText(world.packageCode, buffer, length);
    } else if (*type == 64) {
      *time = {static_cast<DWORD>(*world.created), static_cast<DWORD>(*world.created >> 32)};
    }
  });
}

INSTALLSTATE MsiQueryProductStateA(LPCSTR product) {
  return Call(INSTALLSTATE_UNKNOWN, [&] { return Known(world.productStates, OrEmpty(product), 1605); });
}

UINT MsiEnumRelatedProductsA(LPCSTR upgradeCode, DWORD reserved, DWORD index, LPSTR product) {
  return CodedCall([&] {
    Require(OrEmpty(upgradeCode).size() == 38 && reserved == 0, ERROR_INVALID_PARAMETER);
    const auto &products = Known(world.relatedProducts, upgradeCode, ERROR_NO_MORE_ITEMS);
    Require(index < products.size(), ERROR_NO_MORE_ITEMS);
    Fill(product, 39, products[index]);
  });
}

UINT MsiGetProductInfoA(LPCSTR product, LPCSTR attribute, LPSTR buffer, DWORD *length) {
  return CodedCall([&] {
    world.See(attribute, {*length});
    PutText(Known(Known(world.productInfo, product, 1605), attribute, 1608), buffer, length);
  });
}
