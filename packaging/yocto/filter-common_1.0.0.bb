# A recipe with which integrators can start. It has the syntax of Yocto 4.2 to 5.0. This project
# does not build the recipe. protobuf and googletest come from meta-oe. docs/porting.md says what to
# fill in.
SUMMARY = "Data model of packet-filter rules"
DESCRIPTION = "Rules of packet filters (matches, actions, policers, counters) for the control plane \
of switches and routers, and their way between processes as bytes."
SECTION = "libs"
# No licence has been granted yet; the project's owner will decide. Write the agreed licence here.
LICENSE = "CLOSED"

SRC_URI = "git://REPOSITORY;protocol=https;branch=main \
           file://run-ptest"
# The commit of release 1.0.0.
SRCREV = "COMMIT"
S = "${WORKDIR}/git"

DEPENDS = "protobuf protobuf-native"

inherit cmake pkgconfig ptest

# By default the recipe uses the device's own libraries. Without `device` it builds and installs the
# stand-ins instead. The tests need the stand-ins, so an image for ptest sets PACKAGECONFIG:remove =
# "device".
PACKAGECONFIG ??= "device"
PACKAGECONFIG[device] = "-DFILTER_COMMON_PLATFORM=device,-DFILTER_COMMON_PLATFORM=standin,limid policer"
TESTED = "${@bb.utils.contains('PTEST_ENABLED', '1', bb.utils.contains('PACKAGECONFIG', 'device', '', '1', d), '', d)}"

DEPENDS:append = "${@' googletest' if d.getVar('TESTED') else ''}"
EXTRA_OECMAKE = "-DFILTER_COMMON_BUILD_INSPECT=OFF \
    -DBUILD_TESTING=${@'ON' if d.getVar('TESTED') else 'OFF'} -DCMAKE_SKIP_RPATH=ON"

# Tests that read files of the source or build folder are left out.
do_install_ptest() {
    [ -n "${TESTED}" ] || return 0
    for program in ${B}/tests/*_test; do
        [ "$(basename "$program")" = bytes_test ] || install -m 0755 "$program" ${D}${PTEST_PATH}
    done
}

FILES:${PN}-dev += "${datadir}/filter_common"
