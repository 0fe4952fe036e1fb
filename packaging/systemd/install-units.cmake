# Installs the systemd user units of the background check; runs at install time (see
# packaging/CMakeLists.txt) with CMAKE_INSTALL_PREFIX as given then.
#
# Where they go: systemd's own directory for user units under /usr and /usr/local; under any other
# prefix (a home installation in ~/.local, say) the data directory's systemd/user, which is where
# the user's systemd looks in $XDG_DATA_HOME.

if(IS_ABSOLUTE "${KESTRINE_BINDIR}")
    set(KESTRINE_CLI_PATH "${KESTRINE_BINDIR}/kestrine-cli")
else()
    set(KESTRINE_CLI_PATH "${CMAKE_INSTALL_PREFIX}/${KESTRINE_BINDIR}/kestrine-cli")
endif()

if(CMAKE_INSTALL_PREFIX MATCHES "^/usr(/local)?/?$")
    set(unit_dir "${CMAKE_INSTALL_PREFIX}/lib/systemd/user")
elseif(IS_ABSOLUTE "${KESTRINE_DATADIR}")
    set(unit_dir "${KESTRINE_DATADIR}/systemd/user")
else()
    set(unit_dir "${CMAKE_INSTALL_PREFIX}/${KESTRINE_DATADIR}/systemd/user")
endif()

configure_file("${KESTRINE_UNITS_SOURCE_DIR}/kestrine-check.service.in"
    "${KESTRINE_UNITS_BINARY_DIR}/kestrine-check.service" @ONLY)
file(INSTALL DESTINATION "${unit_dir}" TYPE FILE FILES
    "${KESTRINE_UNITS_BINARY_DIR}/kestrine-check.service"
    "${KESTRINE_UNITS_SOURCE_DIR}/kestrine-check.timer")
