#!/usr/bin/env bash
# Validates the desktop entry and the AppStream metainfo, builds the .deb,
# unpacks it into a scratch folder and runs the program from there.
set -euo pipefail
cd "$(dirname "$0")/.."

desktop-file-validate packaging/com.kesta.zunoria.desktop
if command -v systemd-analyze >/dev/null; then
    # The unit's binary exists only where the package is installed; anything else it says is a fault.
    problems=$(systemd-analyze verify --man=no packaging/zunoria-headless@.service 2>&1 |
        grep -v "Command /usr/bin/zunoria is not executable" || true)
    [ -z "$problems" ] || { echo "$problems" >&2; exit 1; }
fi
appstreamcli validate --no-net packaging/com.kesta.zunoria.metainfo.xml

rm -rf build/package
./scripts/package.sh
deb=$(ls build/package/zunoria_*.deb)
depends=$(dpkg-deb -f "$deb" Depends)
echo "Depends: $depends"
for needed in libqt6widgets6 libqt6serialport6 libqt6network6 qt6-qpa-plugins; do
    grep -q "$needed" <<<"$depends" || { echo "the package does not depend on $needed" >&2; exit 1; }
done

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
dpkg -x "$deb" "$scratch"
for file in usr/share/applications/com.kesta.zunoria.desktop usr/share/metainfo/com.kesta.zunoria.metainfo.xml \
    usr/share/mime/packages/zunoria.xml usr/share/icons/hicolor/48x48/apps/zunoria.png \
    usr/share/icons/hicolor/256x256/apps/zunoria.png usr/lib/zunoria/ZUN.HLP \
    usr/lib/systemd/system/zunoria-headless@.service usr/lib/sysusers.d/zunoria.conf \
    usr/share/doc/zunoria/zunoria-line.conf.example usr/share/doc/zunoria/mosquitto-zunoria.acl.example \
    usr/share/doc/zunoria/mosquitto-zunoria.conf.example; do
    [ -e "$scratch/$file" ] || { echo "missing from the package: /$file" >&2; exit 1; }
done
version=$(env -u DISPLAY -u QT_QPA_PLATFORM "$scratch/usr/bin/zunoria" --version)
echo "$version"
grep -qx "Zunoria [0-9][0-9.]*" <<<"$version"
"$scratch/usr/bin/zunoria" --help | grep -q -- "--port"
echo "package checks passed: $deb"
