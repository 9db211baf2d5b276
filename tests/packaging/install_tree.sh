#!/bin/sh
# The program installed as `cmake --install` (and so the Debian package) lays it out: it runs from
# its installed place, its desktop entry validates and names the installed icon and program, the
# manual page reads, and a MIME database built from the installed types recognises the Varnel
# files by name while other SQLite and XML files keep their own types.
#   install_tree.sh BUILD_DIR SOURCE_DIR
set -u
build=$1
source=$2
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
fail() { echo "$*"; exit 1; }

root=$dir/root
DESTDIR=$root cmake --install "$build" --prefix /usr >"$dir/install.log" 2>&1 ||
  { cat "$dir/install.log"; fail "cmake --install failed"; }
usr=$root/usr
share=$usr/share
for f in bin/translator share/applications/translator.desktop share/mime/packages/translator.xml \
  share/icons/hicolor/scalable/apps/translator.svg share/man/man1/translator.1.gz; do
  [ -f "$usr/$f" ] || fail "not installed: $f"
done

version=$(env -u DISPLAY "$usr/bin/translator" --version) || fail "installed program: --version failed"
echo "$version" | head -n 1 | grep -Eq '^Translator [0-9]+\.[0-9]+\.[0-9]+ ' ||
  fail "installed program: unexpected version: $version"

entry=$share/applications/translator.desktop
desktop-file-validate "$entry" || fail "the desktop entry does not validate"
icon=$(sed -n 's/^Icon=//p' "$entry")
[ -f "$share/icons/hicolor/scalable/apps/$icon.svg" ] || fail "the entry's icon '$icon' is not installed"
program=$(sed -n 's/^Exec=\([^ ]*\).*/\1/p' "$entry")
[ -x "$usr/bin/$program" ] || fail "the entry's program '$program' is not installed"
xmllint --noout "$share/icons/hicolor/scalable/apps/$icon.svg" || fail "the icon is not well-formed"

page=$share/man/man1/translator.1.gz
warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null)
[ -z "$warnings" ] || fail "the installed manual page: $warnings"
LC_ALL=C.UTF-8 MANWIDTH=80 man -l "$page" 2>/dev/null | grep -q 'EXIT STATUS' ||
  fail "the installed manual page does not read"

# A private MIME database of the standard types and the installed ones, and a private desktop
# database, so that nothing the machine has installed decides.
export XDG_DATA_DIRS="$share" XDG_DATA_HOME="$dir/home/data" XDG_CONFIG_HOME="$dir/home/config"
export XDG_CONFIG_DIRS="$dir/home/etc"
unset XDG_CURRENT_DESKTOP DESKTOP_SESSION KDE_FULL_SESSION GNOME_DESKTOP_SESSION_ID
mkdir -p "$XDG_DATA_HOME" "$XDG_CONFIG_HOME" "$XDG_CONFIG_DIRS"
cp /usr/share/mime/packages/freedesktop.org.xml "$share/mime/packages/" || fail "no shared-mime-info"
update-mime-database "$share/mime" 2>"$dir/mime.err" || fail "update-mime-database failed"
[ -s "$dir/mime.err" ] && { cat "$dir/mime.err"; fail "update-mime-database complains"; }
update-desktop-database "$share/applications" || fail "update-desktop-database failed"
examples=$source/examples
cp "$examples/customer-satisfaction.qes" "$dir/survey.qes"
cp "$examples/customer-satisfaction.qes" "$dir/campaign.qew"
cp "$examples/customer-satisfaction.qes" "$dir/other.sqlite"
cp "$examples/customer-satisfaction.qex" "$dir/survey.qex"
cp "$examples/customer-satisfaction.xml" "$dir/survey.xml"
expect() {
  got=$(xdg-mime query filetype "$dir/$1") || fail "xdg-mime query filetype $1 failed"
  [ "$got" = "$2" ] || fail "$1 is $got, expected $2"
}
expect survey.qes application/x-varnel-questionnaire
expect campaign.qew application/x-varnel-campaign
expect survey.qex application/x-varnel-package
expect other.sqlite application/vnd.sqlite3
expect survey.xml application/xml
for type in application/x-varnel-questionnaire application/x-varnel-package \
  application/x-varnel-campaign; do
  opener=$(xdg-mime query default "$type")
  [ "$opener" = translator.desktop ] || fail "$type opens with '$opener', not translator.desktop"
done
echo "installed tree checked"
