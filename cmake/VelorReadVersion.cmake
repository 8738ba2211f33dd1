# Sets velor_version to the version that VelorBaseVersion.h defines.

set(velor_version_header ${CMAKE_CURRENT_LIST_DIR}/../src/Velor.Base/VelorBaseVersion.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${velor_version_header})
file(STRINGS ${velor_version_header} velor_version REGEX "^#define VELOR_BASE_VERSION_[A-Z]+ [0-9]+$")
list(TRANSFORM velor_version REPLACE "^.* " "")
list(JOIN velor_version "." velor_version)
