#include "tools/snmp_library.h"

#include "host/platform/log_text.h"
#include "host/startup_error.h"
#include "tools/net_snmp_client.h"

#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace talvik::ctl {

namespace {

constexpr const char* kApplicationName = "talvikctl";
constexpr std::size_t kMaxErrorText = 2000;

/// Never destroyed: the library may log until the process ends.
std::string& libraryErrors()
{
    static auto* text = new std::string;
    return *text;
}

int onLibraryMessage(int, int, void* message, void*)
{
    const auto* logged = static_cast<const snmp_log_message*>(message);
    auto& errors = libraryErrors();
    if (logged->priority <= LOG_ERR && errors.size() < kMaxErrorText) {
        errors += errors.empty() ? "" : "; ";
        errors += oneLine(logged->msg);
    }
    return SNMPERR_SUCCESS;
}

void refuseUnlessPrivate(const std::string& file)
{
    struct stat state {};
    if (::stat(file.c_str(), &state) != 0 || ::access(file.c_str(), R_OK) != 0) {
        throw StartupError("cannot read the credentials file " + file + ": " +
                           std::strerror(errno) + "; name a file that this user may read");
    }
    if (!S_ISREG(state.st_mode)) {
        throw StartupError("the credentials file " + file +
                           " is no regular file; name one in the format of snmp.conf");
    }
    if ((state.st_mode & (S_IWGRP | S_IRWXO)) != 0) {
        throw StartupError("the credentials file " + file +
                           " can be read or changed by others; take the access away with "
                           "chmod 600 and choose new passphrases if others had it");
    }
}

void readCredentials(const std::string& file)
{
    if (!file.empty() && read_config_with_type(file.c_str(), "snmp") != SNMPERR_SUCCESS) {
        throw StartupError("cannot use the credentials file " + file + ": " + takeLibraryErrors() +
                           "; it is in the format of snmp.conf");
    }
}

}  // namespace

void startSnmpLibrary(const std::string& credentialsFile)
{
    if (!credentialsFile.empty()) {
        refuseUnlessPrivate(credentialsFile);
    }
    // No MIB: names are not needed, and reading them takes longer than a request.
    ::setenv("MIBS", "", 1);
    ::setenv("MIBDIRS", "", 1);
    ::unsetenv("MIBFILES");
    // A place where nothing can be made: the library would keep folders for certificates there.
    ::setenv("SNMP_PERSISTENT_DIR", "/dev/null", 1);
    snmp_disable_log();
    snmp_enable_calllog();
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, &onLibraryMessage,
                           nullptr);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD, 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE, 1);
    init_snmp(kApplicationName);
    readCredentials(credentialsFile);
    const auto errors = takeLibraryErrors();
    if (!errors.empty()) {
        std::fprintf(stderr, "talvikctl: snmp.conf: %s\n", errors.c_str());
    }
}

std::string takeLibraryErrors()
{
    std::string taken;
    taken.swap(libraryErrors());
    return taken;
}

}  // namespace talvik::ctl
