#!/usr/bin/env bash
# Makes an archive that runs where it is unpacked, on distributions no older than the one it is made on:
# packaging/portable.sh BUILD ARCHIVE.tar.gz. It holds the programs with the libraries that they need, but for
# those that belong to the system: the C and C++ library, X, OpenGL and fonts.
set -euo pipefail
build=$(realpath "$1")
archive=$(realpath -m "$2")
root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
for tool in patchelf ldd tar; do
    command -v "$tool" > /dev/null || { echo "portable: $tool is not installed" >&2; exit 1; }
done
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
name=pagestack-$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")-$(uname -m)
tree=$place/$name
cmake --install "$build" --prefix "$tree" --strip > /dev/null
cp "$root/LICENSE" "$root/packaging/third-party.md" "$tree/"
mkdir -p "$tree/lib/plugins" "$tree/licences"

systems='^(linux-vdso|ld-linux[^/]*|libc|libm|libdl|libpthread|librt|libresolv|libstdc[+][+]|libgcc_s|libGL|libEGL|libGLX|libGLdispatch|libX11|libX11-xcb|libxcb|libfontconfig|libfreetype|libdrm|libgbm)[.]so'

# The libraries of the programs and plug-ins $@, found by the loader, that are not there yet.
take_libraries() {
    local file
    ldd "$@" | sed -n 's/.* => \(\/[^ ]*\) .*/\1/p' | sort -u | while read -r file; do
        [[ $(basename "$file") =~ $systems ]] || cp -nL "$file" "$tree/lib/"
    done
}

take_libraries "$tree"/bin/*
if [ -e "$tree/bin/pagestack" ]; then
    plugins=$(qtpaths6 --query QT_INSTALL_PLUGINS 2> /dev/null || qmake6 -query QT_INSTALL_PLUGINS)
    for plugin in platforms/libqxcb.so platforms/libqoffscreen.so platforms/libqwayland-generic.so \
        wayland-shell-integration/libxdg-shell.so xcbglintegrations/libqxcb-egl-integration.so \
        platforminputcontexts/libcomposeplatforminputcontextplugin.so imageformats/libqsvg.so \
        imageformats/libqjpeg.so imageformats/libqgif.so; do
        [ -e "$plugins/$plugin" ] || { echo "portable: without $plugin" >&2; continue; }
        mkdir -p "$tree/lib/plugins/$(dirname "$plugin")"
        cp -L "$plugins/$plugin" "$tree/lib/plugins/$plugin"
        take_libraries "$tree/lib/plugins/$plugin"
    done
    printf '[Paths]\nPrefix = ..\nPlugins = lib/plugins\n' > "$tree/bin/qt.conf"
fi
for file in "$tree"/lib/*.so*; do
    patchelf --set-rpath "\$ORIGIN" "$file"
done
for file in "$tree"/bin/pagestack*; do
    patchelf --set-rpath "\$ORIGIN/../lib" "$file"
done
find "$tree/lib/plugins" -name '*.so' -exec patchelf --set-rpath "\$ORIGIN/../.." {} +
# The licence of each library, as its package tells it.
if command -v dpkg > /dev/null; then
    for file in "$tree"/lib/*.so*; do
        package=$(dpkg -S "*/$(basename "$file")" 2> /dev/null | head -n 1 | cut -d: -f1 || true)
        [ -z "$package" ] || cp -nL "/usr/share/doc/$package/copyright" "$tree/licences/$package" 2> /dev/null || true
    done
fi
tar --sort=name --owner=0 --group=0 --numeric-owner --mtime="@${SOURCE_DATE_EPOCH:-$(date +%s)}" \
    -C "$place" -c "$name" | gzip -9n > "$archive"
echo "$archive: $(du -h "$archive" | cut -f1)"
