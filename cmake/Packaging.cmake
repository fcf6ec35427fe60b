# SPDX-License-Identifier: GPL-3.0-or-later
# Packages made by CPack from the install rules. In the build folder:
#   cpack -G DEB   lotwright_<version>_<arch>.deb, its library dependencies
#                  worked out by dpkg-shlibdeps (Debian: dpkg-dev)
#   cpack -G TGZ   the same files as a tarball
set(LW_PACKAGE_MAINTAINER "The Lotwright developers <maintainers@lotwright.org>"
    CACHE STRING "The Maintainer field of the Debian package")

set(CPACK_PACKAGE_NAME lotwright)
set(CPACK_PACKAGE_VENDOR "The Lotwright developers")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "keeps the sales, bids and stock of online auctions in one place")
# The long description, a line at a time as dpkg shows it.
string(JOIN "\n" CPACK_PACKAGE_DESCRIPTION
    "Lotwright is a desktop program for people who sell and buy at online"
    "auctions. It keeps one local database of the user's sales, bids, buyers,"
    "sellers and stock, and refreshes it by fetching the auction site's pages"
    "and reading them with rule files: when the site changes, new rule files"
    "put it right, without a new program."
    ""
    "Every ended sale or purchase becomes a worklist (payment, shipping, mails,"
    "packing list, feedback). It builds listing pages from templates and posts"
    "them, sends templated e-mail, holds work for a later connection in an"
    "outbox, keeps inventory with average costs, uploads pictures by FTP and"
    "reports profit and loss. It works offline and loses nothing.")
if(LW_BUILD_SITE)
    string(APPEND CPACK_PACKAGE_DESCRIPTION "\n\n"
        "The package holds the desktop program (lotwright), its command line\n"
        "(lotwright-cli) and a demo marketplace on loopback (lotwright-site).")
else()
    string(APPEND CPACK_PACKAGE_DESCRIPTION "\n\n"
        "The package holds the desktop program (lotwright) and its command line\n"
        "(lotwright-cli).")
endif()
set(CPACK_RESOURCE_FILE_LICENSE ${CMAKE_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_CONTACT ${LW_PACKAGE_MAINTAINER})
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${LW_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Beyond the libraries it links: the window needs a Qt platform plugin to open
# at all; the pages of a real site come over HTTPS, and a Wayland desktop is
# best served by Qt's own Wayland plugin.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "ca-certificates, qt6-wayland")
# Where the desktop has no keyring of its own, one to keep the site password in.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "gnome-keyring")

set(CPACK_GENERATOR TGZ)
include(CPack)
