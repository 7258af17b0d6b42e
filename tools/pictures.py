"""Pictures of the dialogs of the reference package, as PNG files, for whoever wants to see them."""

from contextlib import closing

from dialogs import Screen
from installation import Package
from running_product import RunningProduct

SESSION = r"HKLM\System\CurrentControlSet\Control\Session Manager"
OWED = (SESSION, "/v", "PendingFileRenameOperations")
START = (
    ("WelcomeDlg", None, "Next"),
    ("LicenseDlg", None, ("AgreeToLicense", "Yes"), "Next"),
    ("SetupTypeDlg", None, ("QVSETUPTYPE", "custom"), "Next"),
    ("FeaturesDlg", None, "Next"),
)
INSTALL = (
    *START,
    ("FoldersDlg", None, "BrowsePgm"),
    ("BrowseDlg", None, "Cancel"),
    ("FoldersDlg", None, "Next"),
    ("NeedsDlg", None, "Next"),
    ("SummaryDlg", None, "Cancel"),
    ("CancelDlg", None, "No"),
    ("SummaryDlg", None, "Install"),
    ("FinishedDlg", None, "Finish"),
)
REPAIR = (
    ("MaintenanceDlg", None, ("ZQVREINSTALLOPTIONS", "refresh"), "Next"),
    ("SummaryDlg", None, "Install"),
    ("ProgressDlg", None),
)
REMOVE = (
    ("MaintenanceDlg", None, ("ZQVREINSTALLOPTIONS", "remove"), "Next"),
    ("RemoveDlg", None, "Remove"),
    ("FinishedDlg", None, "Finish"),
)
FAIL = (
    *START,
    ("FoldersDlg", None, "Next"),
    ("SummaryDlg", None, "Install"),
    ("Korvex Vantrel QV", None, "OK"),
    ("FailedDlg", None, "Finish"),
)
FIND_IN_USE = (("FilesInUse", None, "Exit"), ("CancelledDlg", None, "Finish"))
# The engine here finds no files in use, so that the dialog is made the first one.
IN_USE = (
    "INSERT INTO `InstallUISequence` (`Action`, `Sequence`) VALUES ('FilesInUse', 1229)",
    "INSERT INTO `ListBox` (`Property`, `Order`, `Value`, `Text`) VALUES ('FileInUseProcess', 1, '1', 'Vantrel QV')",
)


def take_pictures(machine, build, folder, pictures):
    """Installs the package, repairs it over a running service and removes it, then has it fail and leaves it, all with
    its dialogs and the default folders. Leaves a picture of each dialog in `pictures`, and gives their number."""
    pictures.mkdir(exist_ok=True)
    for old in pictures.glob("*.png"):
        old.unlink()
    package = Package(build / "vantrelqv.msi")
    in_use = package.variant(machine.drive / folder / "in_use.msi", *IN_USE)
    product = RunningProduct(machine)
    with closing(Screen(machine, build / "dialogs.exe")) as screen:

        def show(of, steps, *options, status=0):
            dialogs = screen.open(of, folder, rf"ZQVTEMP=C:\{folder}", *options)
            dialogs.walk(*steps, status=status, pictures=pictures)
            return dialogs

        try:
            # What makes a need that is not met.
            program = rf"\??\{product.path('zqvsvc.exe')}"
            machine.wine("wine", "reg", "add", *OWED, "/t", "REG_MULTI_SZ", "/d", program, "/f")
            show(package, INSTALL, "QVNOSTOP=1")
            product.register_service("KorvexQVSeries", "Korvex QVSeries", lingers=True)
            product.start_services()
            dialogs = show(package, REPAIR, status=None)
            dialogs.wait_for("KorvexQVSeries")
            dialogs.picture(pictures / "ProgressDlg.png")
            product.let_stop()
            dialogs.walk(REMOVE[-1])
        finally:
            product.end()
            machine.wine("wine", "reg", "delete", *OWED, "/f")
        show(package, REMOVE, "QVNOSTOP=1")
        show(package, FAIL, "QVNOSTOP=1", "QVFAIL=1", status=1603)
        show(in_use, FIND_IN_USE, status=1602)
    return len(list(pictures.glob("*.png")))
