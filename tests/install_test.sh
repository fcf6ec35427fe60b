#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the build into a scratch prefix and checks what lands there: the
# programs and nothing else in bin/, the shipped files in share/lotwright/
# exactly as in the sources, the desktop entry, the AppStream metadata, the
# icons at their sizes and the man pages, each carrying the project's version
# where it names one, and both desktop validators' approval where they are
# installed. Then the installed programs run as a user would: each tells its
# version, and the command line finds its shipped files from bin/, keeps the
# user's data in the home folder and writes nothing under the prefix.
#   install_test.sh BUILD_DIR SOURCE_DIR VERSION
set -uo pipefail

build=$1
source=$2
version=$3
id=org.lotwright.Lotwright

work=$(mktemp -d)
trap 'rm -rf "${work}"' EXIT
prefix="${work}/prefix"
failures=0
fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

if ! env -u DESTDIR cmake --install "${build}" --prefix "${prefix}" >"${work}/install.log" 2>&1; then
    cat "${work}/install.log"
    echo "FAILED: cmake --install"
    exit 1
fi

# bin/ holds the three programs, and only them: no test, benchmark or tool.
expected_bin=$'lotwright\nlotwright-cli\nlotwright-site'
actual_bin=$(ls "${prefix}/bin" | sort)
[ "${actual_bin}" = "${expected_bin}" ] ||
    fail "bin/ holds [$(echo ${actual_bin})], not [$(echo ${expected_bin})]"
for program in ${expected_bin}; do
    [ -x "${prefix}/bin/${program}" ] || fail "bin/${program} is not executable"
done

for dir in rules data; do
    diff -r "${source}/${dir}" "${prefix}/share/lotwright/${dir}" >/dev/null ||
        fail "share/lotwright/${dir} differs from the sources' ${dir}/"
done

desktop="${prefix}/share/applications/${id}.desktop"
metainfo="${prefix}/share/metainfo/${id}.metainfo.xml"
for file in "${desktop}" "${metainfo}" \
    "${prefix}/share/icons/hicolor/scalable/apps/${id}.svg" \
    "${prefix}/share/doc/lotwright/LICENSE"; do
    [ -s "${file}" ] || fail "${file#"${prefix}"/} is missing"
done

# A PNG's width and height are the big-endian words at bytes 16 and 20.
for size in 16 24 32 48 64 128 256; do
    png="${prefix}/share/icons/hicolor/${size}x${size}/apps/${id}.png"
    if [ ! -s "${png}" ]; then
        fail "the ${size} px icon is missing"
        continue
    fi
    read -r width height < <(od -An -tu1 -j16 -N8 "${png}" |
        awk '{print $1*16777216+$2*65536+$3*256+$4, $5*16777216+$6*65536+$7*256+$8}')
    [ "${width}x${height}" = "${size}x${size}" ] ||
        fail "the icon in ${size}x${size}/ is ${width}x${height}"
done

# The desktop entry and the metadata name what is installed.
grep -qx "Exec=lotwright" "${desktop}" || fail "the desktop entry does not start bin/lotwright"
grep -qx "Icon=${id}" "${desktop}" || fail "the desktop entry's icon is not ${id}"
grep -q "<launchable type=\"desktop-id\">${id}.desktop</launchable>" "${metainfo}" ||
    fail "the metadata does not launch ${id}.desktop"
newest=$(grep -o '<release version="[^"]*"' "${metainfo}" | head -n 1 | cut -d'"' -f2)
[ "${newest}" = "${version}" ] ||
    fail "the metadata's newest release is ${newest}, the project's version ${version}"

for program in ${expected_bin}; do
    page="${prefix}/share/man/man1/${program}.1"
    if [ ! -s "${page}" ]; then
        fail "the man page of ${program} is missing"
        continue
    fi
    grep -q "^\.TH .*\"Lotwright ${version}\"" "${page}" ||
        fail "the man page of ${program} is not of version ${version}"
    if command -v groff >/dev/null; then
        warnings=$(groff -man -Tutf8 -ww -z "${page}" 2>&1)
        [ -z "${warnings}" ] || fail "groff warns on the man page of ${program}: ${warnings}"
    fi
done

if command -v desktop-file-validate >/dev/null; then
    desktop-file-validate "${desktop}" || fail "desktop-file-validate"
else
    echo "desktop-file-validate is not installed (Debian: desktop-file-utils): not run"
fi
if command -v appstreamcli >/dev/null; then
    appstreamcli validate --no-net "${metainfo}" || fail "appstreamcli validate"
else
    echo "appstreamcli is not installed (Debian: appstream): not run"
fi

# The installed command line, run by a user with a home folder of its own.
before=$(cd "${prefix}" && find . -printf '%p %s %T@\n' | sort)
home="${work}/home"
mkdir -p "${home}"
# The password stays in the scratch database, away from any keyring.
run() {
    env -i PATH=/usr/bin:/bin HOME="${home}" LANG=C.UTF-8 LOTWRIGHT_KEYRING=off \
        "${prefix}/bin/$@"
}
for program in ${expected_bin}; do
    answer=$(run "${program}" --version 2>&1)
    [ "${answer}" = "${program} ${version}" ] ||
        fail "the installed ${program} --version says \"${answer}\", not \"${program} ${version}\""
done
run lotwright-cli init --user Tester --site-id tester --password secret \
    --email tester@example.com >"${work}/init.log" 2>&1 || {
    cat "${work}/init.log"
    fail "the installed lotwright-cli init"
}
database=$(find "${home}/.local/share" -name Lotwright.db 2>/dev/null | head -n 1)
[ -n "${database}" ] || fail "init made no database under the home folder's data folder"
# The shipped rules were found from bin/ and copied into the database.
answer=$(run lotwright-cli rules get Sites Site0 2>&1)
[ $? -eq 0 ] && [ -n "${answer}" ] ||
    fail "the installed lotwright-cli did not read the shipped rules: ${answer}"
# Read whole before it is searched: a search that stops at its first match
# would leave the site writing into a closed pipe.
categories=$(run lotwright-site --print-categories 2>&1)
grep -q '=' <<<"${categories}" ||
    fail "the installed lotwright-site printed no categories"
after=$(cd "${prefix}" && find . -printf '%p %s %T@\n' | sort)
[ "${before}" = "${after}" ] || {
    diff <(echo "${before}") <(echo "${after}")
    fail "running the installed programs changed the prefix"
}

if [ "${failures}" -ne 0 ]; then
    echo "${failures} check(s) failed"
    exit 1
fi
echo "The installed layout is complete."
