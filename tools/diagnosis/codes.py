"""The codes of Windows and of its installer that the library can meet, and the calls whose failures its lines tell."""

import re

# By number: the name that the system's headers give it, and the system's text.
CODES = {
    0: ("ERROR_SUCCESS", "The operation completed successfully."),
    1: ("ERROR_INVALID_FUNCTION", "Incorrect function."),
    2: ("ERROR_FILE_NOT_FOUND", "The system cannot find the file specified."),
    3: ("ERROR_PATH_NOT_FOUND", "The system cannot find the path specified."),
    4: ("ERROR_TOO_MANY_OPEN_FILES", "The system cannot open the file."),
    5: ("ERROR_ACCESS_DENIED", "Access is denied."),
    6: ("ERROR_INVALID_HANDLE", "The handle is invalid."),
    8: ("ERROR_NOT_ENOUGH_MEMORY", "Not enough memory resources are available to process this command."),
    11: ("ERROR_BAD_FORMAT", "An attempt was made to load a program with an incorrect format."),
    13: ("ERROR_INVALID_DATA", "The data is invalid."),
    14: ("ERROR_OUTOFMEMORY", "Not enough memory resources are available to complete this operation."),
    15: ("ERROR_INVALID_DRIVE", "The system cannot find the drive specified."),
    16: ("ERROR_CURRENT_DIRECTORY", "The directory cannot be removed."),
    17: ("ERROR_NOT_SAME_DEVICE", "The system cannot move the file to a different disk drive."),
    18: ("ERROR_NO_MORE_FILES", "There are no more files."),
    19: ("ERROR_WRITE_PROTECT", "The media is write protected."),
    21: ("ERROR_NOT_READY", "The device is not ready."),
    23: ("ERROR_CRC", "Data error (cyclic redundancy check)."),
    27: ("ERROR_SECTOR_NOT_FOUND", "The drive cannot find the sector requested."),
    29: ("ERROR_WRITE_FAULT", "The system cannot write to the specified device."),
    30: ("ERROR_READ_FAULT", "The system cannot read from the specified device."),
    31: ("ERROR_GEN_FAILURE", "A device attached to the system is not functioning."),
    32: (
        "ERROR_SHARING_VIOLATION",
        "The process cannot access the file because it is being used by another process.",
    ),
    33: (
        "ERROR_LOCK_VIOLATION",
        "The process cannot access the file because another process has locked a portion of the file.",
    ),
    38: ("ERROR_HANDLE_EOF", "Reached the end of the file."),
    39: ("ERROR_HANDLE_DISK_FULL", "The disk is full."),
    50: ("ERROR_NOT_SUPPORTED", "The request is not supported."),
    53: ("ERROR_BAD_NETPATH", "The network path was not found."),
    59: ("ERROR_UNEXP_NET_ERR", "An unexpected network error occurred."),
    64: ("ERROR_NETNAME_DELETED", "The specified network name is no longer available."),
    65: ("ERROR_NETWORK_ACCESS_DENIED", "Network access is denied."),
    67: ("ERROR_BAD_NET_NAME", "The network name cannot be found."),
    80: ("ERROR_FILE_EXISTS", "The file exists."),
    82: ("ERROR_CANNOT_MAKE", "The directory or file cannot be created."),
    87: ("ERROR_INVALID_PARAMETER", "The parameter is incorrect."),
    110: ("ERROR_OPEN_FAILED", "The system cannot open the device or file specified."),
    111: ("ERROR_BUFFER_OVERFLOW", "The file name is too long."),
    112: ("ERROR_DISK_FULL", "There is not enough space on the disk."),
    120: ("ERROR_CALL_NOT_IMPLEMENTED", "This function is not supported on this system."),
    121: ("ERROR_SEM_TIMEOUT", "The semaphore timeout period has expired."),
    122: ("ERROR_INSUFFICIENT_BUFFER", "The data area passed to a system call is too small."),
    123: ("ERROR_INVALID_NAME", "The filename, directory name, or volume label syntax is incorrect."),
    126: ("ERROR_MOD_NOT_FOUND", "The specified module could not be found."),
    127: ("ERROR_PROC_NOT_FOUND", "The specified procedure could not be found."),
    142: ("ERROR_BUSY_DRIVE", "The system cannot perform a JOIN or SUBST at this time."),
    144: ("ERROR_DIR_NOT_ROOT", "The directory is not a subdirectory of the root directory."),
    145: ("ERROR_DIR_NOT_EMPTY", "The directory is not empty."),
    148: ("ERROR_PATH_BUSY", "The path specified cannot be used at this time."),
    161: ("ERROR_BAD_PATHNAME", "The specified path is invalid."),
    170: ("ERROR_BUSY", "The requested resource is in use."),
    183: ("ERROR_ALREADY_EXISTS", "Cannot create a file when that file already exists."),
    193: ("ERROR_BAD_EXE_FORMAT", "It is not a valid Win32 application."),
    203: ("ERROR_ENVVAR_NOT_FOUND", "The system could not find the environment option that was entered."),
    206: ("ERROR_FILENAME_EXCED_RANGE", "The filename or extension is too long."),
    216: ("ERROR_EXE_MACHINE_TYPE_MISMATCH", "This file is not compatible with this version of Windows."),
    225: ("ERROR_VIRUS_INFECTED", "The file contains a virus or potentially unwanted software."),
    234: ("ERROR_MORE_DATA", "More data is available."),
    258: ("WAIT_TIMEOUT", "The wait operation timed out."),
    259: ("ERROR_NO_MORE_ITEMS", "No more data is available."),
    267: ("ERROR_DIRECTORY", "The directory name is invalid."),
    299: ("ERROR_PARTIAL_COPY", "Only part of a ReadProcessMemory or WriteProcessMemory request was completed."),
    303: ("ERROR_DELETE_PENDING", "The file cannot be opened because it is in the process of being deleted."),
    448: ("ERROR_UNTRUSTED_MOUNT_POINT", "The path cannot be traversed because it contains an untrusted mount point."),
    487: ("ERROR_INVALID_ADDRESS", "Attempt to access invalid address."),
    534: ("ERROR_ARITHMETIC_OVERFLOW", "Arithmetic result exceeded 32 bits."),
    740: ("ERROR_ELEVATION_REQUIRED", "The requested operation requires elevation."),
    995: ("ERROR_OPERATION_ABORTED", "The I/O operation has been aborted."),
    998: ("ERROR_NOACCESS", "Invalid access to memory location."),
    1004: ("ERROR_INVALID_FLAGS", "Invalid flags."),
    1005: ("ERROR_UNRECOGNIZED_VOLUME", "The volume does not contain a recognized file system."),
    1006: ("ERROR_FILE_INVALID", "The volume for a file has been externally altered so that it is no longer valid."),
    1009: ("ERROR_BADDB", "The configuration registry database is corrupt."),
    1010: ("ERROR_BADKEY", "The configuration registry key is invalid."),
    1011: ("ERROR_CANTOPEN", "The configuration registry key could not be opened."),
    1012: ("ERROR_CANTREAD", "The configuration registry key could not be read."),
    1013: ("ERROR_CANTWRITE", "The configuration registry key could not be written."),
    1018: ("ERROR_KEY_DELETED", "Illegal operation attempted on a registry key that has been marked for deletion."),
    1051: ("ERROR_DEPENDENT_SERVICES_RUNNING", "A stop control has been sent to a service that others depend on."),
    1052: ("ERROR_INVALID_SERVICE_CONTROL", "The requested control is not valid for this service."),
    1053: ("ERROR_SERVICE_REQUEST_TIMEOUT", "The service did not respond to the control request in a timely fashion."),
    1055: ("ERROR_SERVICE_DATABASE_LOCKED", "The service database is locked."),
    1056: ("ERROR_SERVICE_ALREADY_RUNNING", "An instance of the service is already running."),
    1058: ("ERROR_SERVICE_DISABLED", "The service cannot be started."),
    1060: ("ERROR_SERVICE_DOES_NOT_EXIST", "The specified service does not exist as an installed service."),
    1061: ("ERROR_SERVICE_CANNOT_ACCEPT_CTRL", "The service cannot accept control messages at this time."),
    1062: ("ERROR_SERVICE_NOT_ACTIVE", "The service has not been started."),
    1064: ("ERROR_EXCEPTION_IN_SERVICE", "An exception occurred in the service when handling the control request."),
    1067: ("ERROR_PROCESS_ABORTED", "The process terminated unexpectedly."),
    1072: ("ERROR_SERVICE_MARKED_FOR_DELETE", "The specified service has been marked for deletion."),
    1078: ("ERROR_DUPLICATE_SERVICE_NAME", "The name is already in use as a service name or a display name."),
    1114: ("ERROR_DLL_INIT_FAILED", "A dynamic link library (DLL) initialization routine failed."),
    1115: ("ERROR_SHUTDOWN_IN_PROGRESS", "A system shutdown is in progress."),
    1117: ("ERROR_IO_DEVICE", "The request could not be performed because of an I/O device error."),
    1155: ("ERROR_NO_ASSOCIATION", "No application is associated with the specified file for this operation."),
    1168: ("ERROR_NOT_FOUND", "Element not found."),
    1223: ("ERROR_CANCELLED", "The operation was canceled by the user."),
    1224: ("ERROR_USER_MAPPED_FILE", "The operation cannot be performed on a file with a user-mapped section open."),
    1260: ("ERROR_ACCESS_DISABLED_BY_POLICY", "This program is blocked by group policy."),
    1314: ("ERROR_PRIVILEGE_NOT_HELD", "A required privilege is not held by the client."),
    1392: ("ERROR_FILE_CORRUPT", "The file or directory is corrupted and unreadable."),
    1393: ("ERROR_DISK_CORRUPT", "The disk structure is corrupted and unreadable."),
    1400: ("ERROR_INVALID_WINDOW_HANDLE", "Invalid window handle."),
    1450: ("ERROR_NO_SYSTEM_RESOURCES", "Insufficient system resources exist to complete the requested service."),
    1455: ("ERROR_COMMITMENT_LIMIT", "The paging file is too small for this operation to complete."),
    1460: ("ERROR_TIMEOUT", "This operation returned because the timeout period expired."),
    1601: ("ERROR_INSTALL_SERVICE_FAILURE", "The Windows Installer service could not be accessed."),
    1602: ("ERROR_INSTALL_USEREXIT", "User cancelled installation."),
    1603: ("ERROR_INSTALL_FAILURE", "Fatal error during installation."),
    1604: ("ERROR_INSTALL_SUSPEND", "Installation suspended, incomplete."),
    1605: ("ERROR_UNKNOWN_PRODUCT", "This action is only valid for products that are currently installed."),
    1606: ("ERROR_UNKNOWN_FEATURE", "Feature ID not registered."),
    1607: ("ERROR_UNKNOWN_COMPONENT", "Component ID not registered."),
    1608: ("ERROR_UNKNOWN_PROPERTY", "Unknown property."),
    1609: ("ERROR_INVALID_HANDLE_STATE", "Handle is in an invalid state."),
    1610: ("ERROR_BAD_CONFIGURATION", "The configuration data for this product is corrupt."),
    1611: ("ERROR_INDEX_ABSENT", "Component qualifier not present."),
    1612: ("ERROR_INSTALL_SOURCE_ABSENT", "The installation source for this product is not available."),
    1613: ("ERROR_INSTALL_PACKAGE_VERSION", "The Windows Installer service is too old for this package."),
    1614: ("ERROR_PRODUCT_UNINSTALLED", "Product is uninstalled."),
    1615: ("ERROR_BAD_QUERY_SYNTAX", "SQL query syntax invalid or unsupported."),
    1616: ("ERROR_INVALID_FIELD", "Record field does not exist."),
    1617: ("ERROR_DEVICE_REMOVED", "The device has been removed."),
    1618: ("ERROR_INSTALL_ALREADY_RUNNING", "Another installation is already in progress."),
    1619: ("ERROR_INSTALL_PACKAGE_OPEN_FAILED", "This installation package could not be opened."),
    1620: ("ERROR_INSTALL_PACKAGE_INVALID", "This installation package could not be opened: it is not valid."),
    1621: ("ERROR_INSTALL_UI_FAILURE", "There was an error starting the Windows Installer service user interface."),
    1622: ("ERROR_INSTALL_LOG_FAILURE", "Error opening installation log file."),
    1623: ("ERROR_INSTALL_LANGUAGE_UNSUPPORTED", "The language of this installation package is not supported."),
    1624: ("ERROR_INSTALL_TRANSFORM_FAILURE", "Error applying transforms."),
    1625: ("ERROR_INSTALL_PACKAGE_REJECTED", "This installation is forbidden by system policy."),
    1626: ("ERROR_FUNCTION_NOT_CALLED", "Function could not be executed."),
    1627: ("ERROR_FUNCTION_FAILED", "Function failed during execution."),
    1628: ("ERROR_INVALID_TABLE", "Invalid or unknown table specified."),
    1629: ("ERROR_DATATYPE_MISMATCH", "Data supplied is of wrong type."),
    1630: ("ERROR_UNSUPPORTED_TYPE", "Data of this type is not supported."),
    1631: ("ERROR_CREATE_FAILED", "The Windows Installer service failed to start."),
    1632: ("ERROR_INSTALL_TEMP_UNWRITABLE", "The Temp folder is on a drive that is full or is inaccessible."),
    1633: ("ERROR_INSTALL_PLATFORM_UNSUPPORTED", "This package is not supported by this processor type."),
    1634: ("ERROR_INSTALL_NOTUSED", "Component not used on this computer."),
    1635: ("ERROR_PATCH_PACKAGE_OPEN_FAILED", "This update package could not be opened."),
    1636: ("ERROR_PATCH_PACKAGE_INVALID", "This update package could not be opened: it is not valid."),
    1637: ("ERROR_PATCH_PACKAGE_UNSUPPORTED", "This update package cannot be processed by this Windows Installer."),
    1638: ("ERROR_PRODUCT_VERSION", "Another version of this product is already installed."),
    1639: ("ERROR_INVALID_COMMAND_LINE", "Invalid command line argument."),
    1640: ("ERROR_INSTALL_REMOTE_DISALLOWED", "Installation in a remote session is not permitted."),
    1641: ("ERROR_SUCCESS_REBOOT_INITIATED", "The requested operation succeeded; the system is being restarted."),
    1642: ("ERROR_PATCH_TARGET_NOT_FOUND", "The upgrade cannot be installed: the program to be upgraded is missing."),
    1643: ("ERROR_PATCH_PACKAGE_REJECTED", "The update package is not permitted by software restriction policy."),
    1644: ("ERROR_INSTALL_TRANSFORM_REJECTED", "A customization is not permitted by software restriction policy."),
    1645: ("ERROR_INSTALL_REMOTE_PROHIBITED", "Installation from a remote desktop connection is not permitted."),
    1646: ("ERROR_PATCH_REMOVAL_UNSUPPORTED", "Uninstallation of the update package is not supported."),
    1647: ("ERROR_UNKNOWN_PATCH", "The update is not applied to this product."),
    1648: ("ERROR_PATCH_NO_SEQUENCE", "No valid sequence could be found for the set of updates."),
    1649: ("ERROR_PATCH_REMOVAL_DISALLOWED", "Update removal was disallowed by policy."),
    1650: ("ERROR_INVALID_PATCH_XML", "The XML update data is invalid."),
    1651: ("ERROR_PATCH_MANAGED_ADVERTISED_PRODUCT", "Managed advertised products cannot be updated."),
    1652: ("ERROR_INSTALL_SERVICE_SAFEBOOT", "The Windows Installer service is not accessible in Safe Mode."),
    1653: ("ERROR_FAIL_FAST_EXCEPTION", "A fail fast exception occurred."),
    1654: ("ERROR_INSTALL_REJECTED", "The program to be run is not compatible with this version of Windows."),
    1655: ("ERROR_DYNAMIC_CODE_BLOCKED", "The operation was blocked: the process prohibits dynamic code generation."),
    1656: ("ERROR_NOT_SAME_OBJECT", "The objects are not identical."),
    1657: ("ERROR_STRICT_CFG_VIOLATION", "The specified image file was blocked from loading."),
    1722: ("RPC_S_SERVER_UNAVAILABLE", "The RPC server is unavailable."),
    1812: ("ERROR_RESOURCE_DATA_NOT_FOUND", "The specified image file did not contain a resource section."),
    1813: ("ERROR_RESOURCE_TYPE_NOT_FOUND", "The specified resource type cannot be found in the image file."),
    1814: ("ERROR_RESOURCE_NAME_NOT_FOUND", "The specified resource name cannot be found in the image file."),
    1815: ("ERROR_RESOURCE_LANG_NOT_FOUND", "The specified resource language ID cannot be found in the image file."),
    1816: ("ERROR_NOT_ENOUGH_QUOTA", "Not enough quota is available to process this command."),
    1920: ("ERROR_CANT_ACCESS_FILE", "The file cannot be accessed by the system."),
    3010: ("ERROR_SUCCESS_REBOOT_REQUIRED", "The requested operation is successful. A restart is needed."),
}

NUMBERS = {name: number for number, (name, _) in CODES.items()}

# The calls behind the texts that do not name theirs themselves, by how the text begins. The order decides. A folder
# that cannot be deleted while no line tells of a deletion could not be searched.
CALLS = (
    (r"Unable to expand environment strings", "ExpandEnvironmentStrings"),
    (r"Can't set environment variable", "SetEnvironmentVariable"),
    (r"Can't read value", "RegQueryValueEx"),
    (r"Can't open key |Open key error|Delete value open key error", "RegOpenKeyEx"),
    (r"Can't query key info", "RegQueryInfoKey"),
    (r"Can't enumerate Key values", "RegEnumValue"),
    (r"Can't set value", "RegSetValueEx"),
    (r"Delete value error", "RegDeleteValue"),
    # A folder is held while it is searched or copied to.
    (
        r"FindFirstFile\(|Folder '.*' cannot be deleted",
        "FindFirstFile, FindNextFile, CreateFile or GetFileInformationByHandle",
    ),
    (r"Can't use folder", "CreateFile or GetFileInformationByHandle"),
    (r"Can't open ", "fopen"),
    (r"Can't write ", "fopen, fwrite or fclose"),
    (r"Can't read", "fread"),
    (r"Can't get file size", "fseek or ftell"),
    (r"Error writing", "fwrite or fclose"),
    (r"Error \S+ \(0x[0-9a-f]+\) creating", "CreateFile"),
    (r"Error \S+ creating", "CreateDirectory"),
    (r"Couldn't create", "CreateDirectory"),
    (r"Error \S+ copying", "CopyFileEx, CreateFile or GetFileInformationByHandle"),
    (r"Error \S+ getting attributes", "GetFileAttributes"),
    (r"Error \S+ setting attributes", "SetFileAttributes"),
    (r"Error \S+ opening service", "OpenSCManager or OpenService"),
    (r"(?:Exception in service|Error \S+ stopping service)", "ControlService"),
    (r"Error \S+ getting process", "GetExitCodeProcess"),
    (r"Process '.*' wait error", "WaitForSingleObject"),
    (r"Unable to (?:find and run|launch)", "ShellExecuteEx"),
    (r"Unable to get (?:proc|\S+\(\) address)", "GetProcAddress"),
    (r"Can't load", "LoadLibraryEx"),
    (r"Delete file", "DeleteFile"),
    (r"Delete path", "RemoveDirectory"),
    (r"Unable to locate source path", "MsiGetSourcePath"),
    (r"(?:iiiDisplayMsgBox: u|U)nable to create record", "MsiCreateRecord"),
    (r"Can't find '|iwiLoadNlsString LoadLibrary", "LoadLibraryEx"),
    (r"iwiLoadNlsString\(\)", "LoadString"),
)
CALLS = tuple((re.compile(r"(?:\*\*\*)?(?:" + begin + ")"), call) for begin, call in CALLS)
NAMED = re.compile(r"(?:\*\*\*)?(?:Error -?\w+ from )?([A-Za-z]\w+)(?:\(| error)")
CODE = (
    r"(?:failed,?|[Cc]ode|rc:?|[Ee]rror:?(?: [12](?= ))?) ?\(?(-?\d+|0x[0-9a-fA-F]+)\b",
    r"(?:'| info)[: ]*\(?(-?\d+)\)?\.?$",
    r"source path \((-?\d+)\)",
    r"\((-?\d+)\)$",
)
CODE = tuple(map(re.compile, CODE))
NO_CODE = re.compile(r"\*\*\*(?:Line \d|Invalid file pattern|Action '|\d+ names)|Can't allocate|.* ended with -?\d+$")
QUOTED = re.compile(r"(?<!\w)'(.*?)'(?!\w)")


def call_of(text):
    """The Windows or installer call that the line's text is about, without the letter of its form; several that cannot
    be told apart with "or" between them; empty when it is about none."""
    for begin, call in CALLS:
        if begin.match(text):
            return call
    match = NAMED.match(text)
    if not match:
        return ""
    # Two lines of the library about properties begin with a small letter.
    return "M" + match[1][1:] if match[1].startswith("msi") else match[1]


def code_of(text):
    """The code in the line's text, which shows it decimal, hexadecimal or by name; none when there is none."""
    if NO_CODE.match(text):
        return None
    # What stands in quotation marks is the caller's.
    bare = QUOTED.sub("''", text)
    for pattern in CODE:
        match = pattern.search(bare)
        if match:
            return int(match[1], 16 if match[1].startswith("0x") else 10)
    named = re.match(r"\*\*\*Error ([A-Z]\w+) ", text)
    return NUMBERS.get(named[1]) if named else None


def argument_of(text):
    """What the call was about: what the text has in quotation marks or, without any, behind the call's bracket."""
    path = re.search(r"LoadLibrary(?:Ex)?\((.*)\) failed", text)
    if path:
        return path[1]
    found = QUOTED.findall(text)
    bracket = re.search(r"\w\(([^()']+)\)", text)
    return found[0] if found else bracket[1] if bracket else ""


def explain(code):
    """The code's name and the system's text for it; the number alone for an unknown one."""
    name, text = CODES.get(code, ("", ""))
    return f"{code} {name}: {text}" if name else str(code)
