# The languages beside English: of the printer descriptions, and of the tools' texts.
# SPDX-License-Identifier: Apache-2.0
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/po/LINGUAS)
file(STRINGS ${PROJECT_SOURCE_DIR}/po/LINGUAS KORVEL_LANGUAGES REGEX "^[a-z]")
