#include "sweep.h"

#include <algorithm>

#include "features/feature_table.h"
#include "platform/owner.h"
#include "runtime/frame.h"
#include "services/files/copy.h"
#include "services/files/create.h"
#include "services/files/delete.h"
#include "services/files/existence.h"
#include "services/files/source_path.h"
#include "services/system/environment.h"
#include "services/system/process.h"
#include "services/system/registry.h"
#include "services/tables/binary_stream.h"
#include "services/tables/components.h"
#include "services/tables/products.h"
#include "services/tables/remove_file.h"
#include "support.h"

namespace {

/// Runs an operation of the library inside the frame.
template <auto Operation>
UINT InFrame(MSIHANDLE session) {
  return RunAction({"operation", 0, kAnyMode, [] { return static_cast<UINT>(Operation()); }}, session);
}

const Scenario kScenarios[] = {
#define ACTION_AS(action, ...) {#action, action},
#include "zqviwicn/actions.inc"
    {"external_copy", iwiUserExit, [](World &world) { world.properties["ZQVEXTCA60000"] = "C:\\copy"; }},
    {"all_logs", iwiPrintSummary,
     [](World &world) {
       world.properties.merge(Properties("ZQVUSERTRACEPATH=C:\\t|ZQVUSERLOGPATH=C:\\u|ZQVTEMPLOGPATH=C:\\l"));
     }},
    {"early_end", iwiCleanUp,
     [](World &world) {
       world.properties["ZQVSCRIPT"] = "";
       world.properties["ZQVTEMPLOGPATH"] = "C:\\temp\\zqvg0001.txt";
     }},
    {"losing_silently", iwiTestLosingFeatures, [](World &world) { world.properties["UILevel"] = "2"; }},
    {"stacked_files", InFrame<[] { return iwiStackFilesForDeletion("C:\\tree\\a.txt", "Base", 1); }>},
    {"stacked_folder", InFrame<[] { return iwiStackFolderForDeletion("C:\\tree\\", "Base", 2); }>},
    {"component", InFrame<[] { return ResultOf(iwiFindLocalComponent("Other") == "Base"); }>},
    {"binary", InFrame<[] { return ResultOf(iwiUnpackBinary("stream", "", "C:\\temp\\out.bin", nullptr)); }>},
    {"source_path", InFrame<[] {
       std::string path;
       UINT result = 0;
       const bool found = iwiGetSourceFilePath("file", "INSTALLDIR", path, result);
       return result != ERROR_SUCCESS ? result : ResultOf(found);
     }>},
    {"products", InFrame<[] {
       std::string product;
       iwiFindRelatedProduct("{8D1C5EA1-A4C5-4967-97FA-77FE6D4B5EA7}", product);
       return ResultOf(iwiGetProductData(2, nullptr) == "Vantrel QV" && product == "{P}");
     }>},
    {"deletion", InFrame<[] {
       return ResultOf(iwiDeletePattern(
           {.execute = true, .path = "C:\\tree\\*", .deleteFiles = true, .removeFolders = true, .recurse = true}));
     }>},
    {"deletion_stacked", InFrame<[] {
       return ResultOf(iwiDeletePattern(
           {.path = "C:\\tree\\*", .component = "Base", .installMode = 1, .deleteFiles = true, .recurse = true}));
     }>},
    {"copy", InFrame<[] { return iwiCopyPattern("C:\\tree", "C:\\copy\\of", "*", true); }>},
    {"copy_cancelled", InFrame<[] { return iwiCopyPattern("C:\\tree", "C:\\copy\\of", "*", true); }>},
    {"existence", InFrame<[] {
       std::string name;
       return ResultOf(iwiFileExists("C:\\tree\\a.txt") && iwiFolderExists("C:\\tree") &&
                       iwiFindFile("C:\\tree\\*.txt", &name) && iwiFindExtension("C:\\tree\\s", name));
     }>},
    {"folders", InFrame<[] { return ResultOf(!iwiCreateFolderTree("C:\\x\\y\\") && iwiRemoveFolderNow("C:\\x\\y")); }>},
    {"programs", InFrame<[] {
       DWORD code = 0;
       OwnedKernelHandle process;
       return iwiLaunch("C:\\tree\\a.txt", "", "", 0, &process)
                  ? iwiLaunchAndWait("C:\\tree\\a.txt", "-x", "", 0, &code, 1000)
                  : ERROR_INSTALL_FAILURE;
     }>},
    {"registry", InFrame<[] {
       std::vector<BYTE> data;
       UINT result = 0;
       const bool read = iwiRegReadValue(nullptr, "Software\\K", "v", &data, nullptr, &result);
       const bool written = iwiRegWriteValue(nullptr, "Software\\K", "v", REG_SZ, "x", 2, &result);
       const bool set = iwiRegSetValue(nullptr, "Software\\K", "v", REG_SZ, "y", -1);
       const bool deleted = iwiRegDeleteValue(nullptr, "Software\\K", "v", true);
       return result != ERROR_SUCCESS ? result : ResultOf(read && written && set && deleted);
     }>},
    {"environment", InFrame<[] { return ResultOf(iwiRefreshEnvironmentVariable("PATH")); }>},
};

const Setting kSettings[] = {
    {"upgrade", {}},
    {"deferred", {MSIRUNMODE_SCHEDULED}},
    {"rollback", {MSIRUNMODE_ROLLBACK}},
    {"commit", {MSIRUNMODE_COMMIT}},
    {"first",
     {},
     "UILevel=2|ONLYINI=1|Installed=|USEINI=|ZQVTEMPFILENUM=|ZQVPREVPGM=|ADDLOCAL=|ZQVUSERTRACEPATH=C:\\t",
     true},
    {"removal",
     {},
     "REMOVE=ALL|ZQVREMOVE=1|ZQVLEAVEQMDATAREMOVE=delete|UpgradeCode={5A8B5D80-6DCC-4317-9922-99EC0093BF24}"},
    {"administrative", {MSIRUNMODE_ADMIN}, "HIGHCONTRAST=yes|INSTALLTRACE=none"}};

/// The machine that the product is on.
void FillMachine(World &world) {
  world.WriteFile("C:\\service\\Valid.csd", "");
  world.MakeFolder("C:\\old\\doc\\chm");
  world.held.insert("C:\\qv\\bin\\zqvmtbrn.exe");
  world.processes = {{8, "C:\\qv\\bin\\zqvmtbrn.exe"}};
  world.services["KorvexQVSeries"].stopsAt = world.clockMs + 600;
  world.relatedProducts["{8D1C5EA1-A4C5-4967-97FA-77FE6D4B5EA7}"] = {"{P}"};
  world.productStates["{P}"] = INSTALLSTATE_DEFAULT;
  world.productInfo["{P}"]["InstalledProductName"] = "QV";
  for (const auto &[path, text] : Properties(
           R"(Korvex\QVSeries\CurrentVersion\VRMF=5.3.0.1|Korvex\QVSeries\CurrentVersion\PgmFolder=C:\qv|K\v=x|)"
           R"(Korvex\QVSeries\CurrentVersion\HighContrastMode=0|Korvex\QVSeries\CurrentVersion\Components\first=x|)"
           R"(Korvex\QVSeries\CurrentVersion\Components\Server=x|Korvex\QVSeries\CurrentVersion\Zekit\Version=1|)"
           R"(Korvex\QVSeries\CurrentVersion\Maintenance Applied\Maint 1.2=C:\service|)"
           R"(Korvex\QVSeries\CurrentVersion\Maintenance Applied\Shipped=1.1)")) {
    const std::size_t cut = path.rfind('\\');
    world.registry["hklm\\Software\\" + path.substr(0, cut)][path.substr(cut + 1)] = RegistryValue::Text(text);
  }
  const std::string system = "hklm\\SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment";
  world.registry[system.substr(0, system.rfind('\\'))]["PendingFileRenameOperations"] = {REG_MULTI_SZ,
                                                                                         "\\??\\C:\\qv\\a"};
  world.registry[system]["PATH"] = RegistryValue::Text("%X%\\bin");
}

void FillWorld(World &world) {
  world.properties = Properties(
      R"(TempFolder=C:\temp\|ZQVTEMP=C:\temp|ZQVTEMPFILENUM=0001|UILevel=5|ProductName=QV|ProductVersion=6.0|Installed=1|)"
      R"(UpgradeCode={8D1C5EA1-A4C5-4967-97FA-77FE6D4B5EA7}|VersionNT=501|SystemLanguageID=1031|ADDLOCAL=Base,Server|)"
      R"(ZQVCHECKMSCS=1|ZQVLICENSETYPE=trial|TRIALTOPROD=yes|ZQVSERVICESHIPLEVEL=1.2|ZQVPGMFOLDER=C:\qv|)"
      R"(ZQVDATFOLDER=C:\data|ZQVPREVPGM=C:\old|INSTALLLOG=C:\new\user.log|USEINI=C:\temp\r.ini|)"
      R"(SAVEINI=C:\temp\saved.ini|ZQVPROPERTYNAMELIST1=ProductName;PGMFOLDER|CostingComplete=1|ZQVVOLUMELABEL=QV|)"
      R"(ZQVPATHTOCHECK=ZQVPGMFOLDER|ZQVMIGRATE=1|ZQVPREVDAT=C:\older|ZQVPREVVERSION=5.3.0.1|ZQVREMOVE=0|)"
      R"(ZQVMIGRATEFILES1=a.ini|ZQVMIGRATEDFROM=1:3600|ZQVSAVEQMUNITS=3|ZQVSCRIPT=1|)"
      R"(ZQVPSAPI=C:\temp\psapi.dll|ZQVTIDYFOLDER=C:\old\|ZQVVRMF=5.3|ZQVOLDVRMF=5.3.0.1|ZQVSETHIGHCONTRAST=1|)"
      R"(ZQVLOGFOLDER=C:\log|ZQVLEAVEWEBDATAINSTALL=delete|)"
      R"(ZQVSOURCE=C:\media\|ZQVLICENSEPATH=sub|ZQVLANGUAGELIC=de_DE|ZQVZEKITAVAILABLE=1|ZQVZEKITSETUP=C:\tree\a.txt|)"
      R"(ZQVECLIPSELINKS=de_de|ZQVPERFMON=1|TARGETDIR=C:\new|)"
      R"(ARPREADME=C:\qv\readme.txt|ZQVMKDIR=1|ZQVSYSTEMLANGUAGECODE=de_DE|ZQVSERVICELEVELMESSAGE=later|)");
  for (const auto &[path, bytes] : Properties(
           "C:\\temp\\r.ini=[Response]\nPGMFOLDER=%X%\nWIZPARMFILE=C:\\temp\\r.ini\nAGREETOLICENSE=maybe\n|"
           "C:\\temp\\zqvg0001.txt=a line\r\n|C:\\temp\\zqvcancl.txt=|C:\\qv\\bin\\zqvmtbrn.exe=MZ|"
           "C:\\temp\\zqvmigr\\a.ini=a|C:\\temp\\zqvm0001.txt=a.ini\r\n|C:\\temp\\zqvsave\\x=|C:\\older\\b.ini=b|"
           "C:\\old\\bin\\x.exe=MZ|C:\\data\\qmgrs\\one\\qm.ini=q|"
           "C:\\qv\\bin\\a.trc=|C:\\qv\\docs\\fr_fr\\x.idx=|C:\\data\\conv\\a.tbl=|C:\\data\\web\\scripts\\a=|C:"
           "\\log\\qv1.log=|"
           "C:\\older\\conv\\a.tbl=a|C:\\media\\sub\\de_DE.txt=text|C:\\qv\\eclipse\\links\\zqv_fr_fr.link=f|"
           "C:\\media\\sub\\a.sig=s|C:\\temp\\zqvsave\\links\\list.txt=+gone\n|C:\\qv\\licenses\\zqvfiles.txt=x\n|"
           "C:\\qv\\bin\\zqvregnet.exe=MZ|C:\\windows\\system32\\lodctr.exe=MZ|C:\\windows\\system32\\unlodctr.exe=MZ|"
           "C:\\qv\\bin\\endqvlsr.exe=MZ|C:\\data\\zqvqmgrs.txt=one\n|C:\\tree\\a.txt=a|C:\\tree\\sub\\b.txt=b")) {
    world.WriteFile(path, bytes);
  }
  for (const char *name :
       {"bin\\zqvmjpse.exe", "bin\\zqvtcert.exe", "bin\\zqvlpad.exe", "bin\\zqvsslwz.exe", "bin\\setqvscp.exe",
        "bin\\zqvmkdir.exe", "bin\\zqvregnet.exe", "doc\\sslinfo.htm", "readme.txt"}) {
    world.WriteFile(std::string("C:\\qv\\") + name, "MZ");
    world.programs[std::string("C:\\qv\\") + name] = {};
  }
  world.Attributes("C:\\tree\\sub\\b.txt") = FILE_ATTRIBUTE_READONLY;
  world.programs["C:\\windows\\system32\\lodctr.exe"] = world.programs["C:\\windows\\system32\\unlodctr.exe"] = {};
  world.programs["C:\\tree\\a.txt"].runtimeMs = 10;
  world.MakePsapi("C:\\temp\\psapi.dll");
  world.environment["X"] = "C:\\p";
  for (const UINT id : {406,  613,  695,  1016, 1017, 1018, 1019, 1020, 1114, 1121, 2001, 2004, 2027, 2031, 2034, 2041,
                        2053, 2092, 2120, 2121, 2122, 2123, 2124, 2125, 2126, 2127, 2128, 2129, 2130, 2131, 2140}) {
    world.modules["C:\\temp\\zqvl0001.dll"].strings[id] = "%1";
  }
  world.modules["C:\\copy\\zqviwicn.dll"];
  for (UINT id = 1; id <= 200; ++id) {
    world.ownModule.strings[id] = id < 20 ? "first" : "name";
  }
  world.created = 133541078400000000;
  world.packageCode = "{CODE}";
  for (const char *name : kFeatureNames) {
    world.features[name] = {};
  }
  world.features["Explorer"].action = INSTALLSTATE_LOCAL;
  world.components["Base"] = {INSTALLSTATE_ABSENT, INSTALLSTATE_LOCAL};
  world.features["Server"] = world.features["docs_fr_fr_eclipse"] = {INSTALLSTATE_LOCAL, INSTALLSTATE_ABSENT};
  world.components["Base_base"] = {INSTALLSTATE_LOCAL, INSTALLSTATE_LOCAL};
  world.components["cServer"] = {INSTALLSTATE_LOCAL, INSTALLSTATE_ABSENT};
  world.tables["FeatureComponents"] = {{"Feature_", "Component_"}, {{"Server", "cServer"}}};
  world.tables["Feature"].rows = {{"Base", {}, "The base"}, {"Server", {}, "The server"}};
  world.tables["Component"].rows = {{"Base"}};
  world.tables["CustomAction"].rows = {{"One", 1}, {"Two", 0x401}};
  const std::string lists[] = {"ZQVPRODUCTPREREQLIST", "ZQVFEATUREPREREQLIST", "ZQVSUMMARYLIST"};
  world.tables["ListBox"] = {{"Property", "Order", "Value", "Text"},
                             {{lists[0], 1, "1", "x"}, {lists[1], 1, "1", "x"}, {lists[2], 1, "1", "x"}},
                             2};
  world.tables["File"].rows = {{"file", "A~1|a.txt"}, {"zekit", "a.txt"}, {"readme", "README~1|readme_de_DE.txt"}};
  world.tables["UIText"] = {{"Key", "Text"}, {{"Other", "x"}, {"ZQV__setup_language", "German"}}};
  for (const char *name : {"stream", "zqviwiln.dll", "zqvircgn.dll", "chmde_de.u00", "server.u00"}) {
    world.tables["Binary"].rows.push_back({name, Bytes{'d', '\\'}});
  }
  world.sourcePaths["INSTALLDIR"] = world.sourcePaths["TARGETDIR"] = "C:\\tree\\";
  world.targetPaths = {{"TARGETDIR", ""}, {"ZQVPGMFOLDER", ""}, {"ZQVDATFOLDER", ""}, {"ZQVLOGFOLDER", ""}};
  world.volumeLabels["C:\\"] = "QV";
}

}  // namespace

std::vector<SweepCase> SweepCases(bool onlyFirst) {
  std::vector<SweepCase> cases;
  for (const Scenario &scenario : kScenarios) {
    const std::string_view name = scenario.name;
    const bool few = onlyFirst || !name.starts_with("iwi");
    const std::size_t most = few ? 2 : name.starts_with("iwiDeleteOld") ? 3 : std::size(kSettings);
    std::for_each_n(kSettings, most, [&](const Setting &setting) { cases.emplace_back(scenario, setting); });
  }
  return cases;
}

World &ResetWorld(const SweepCase &sweepCase) {
  const auto &[scenario, setting] = sweepCase;
  World &world = ResetWorld();
  FillWorld(world);
  if (!setting.machineIsBare) {
    FillMachine(world);
  }
  world.modes = setting.modes;
  for (const auto &[name, value] : Properties(setting.properties)) {
    world.properties[name] = value;
  }
  HandOver(world);
  if (const std::string_view name = scenario.name; name != "copy_cancelled" && name != "iwiInstallInitPri") {
    world.Remove("C:\\temp\\zqvcancl.txt");
  }
  if (scenario.prepare != nullptr) {
    scenario.prepare(world);
  }
  return world;
}
