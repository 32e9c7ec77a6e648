#!/bin/bash
# Wait for the current app to quit
while kill -0 @PID@ 2>/dev/null; do
    sleep 0.2
done
# Puts the downloaded Kestrio in place of the installed one and starts it;
# the old installation comes back when the new one does not start. Kestrio
# writes this script into its private update folder with the @…@ values
# filled in, each quoted for the shell.
installed=@INSTALLED@
staging=@STAGING@
workspace=@WORKSPACE@
program=@PROGRAM@
# Every entry the installed release put into its folder, one per argument.
ours() { printf '%s\0' @OURS@; }

# Starts the program; true when it still runs 3 s later or ended well
start() {
    setsid "$installed/$program" </dev/null >/dev/null 2>&1 &
    local started=$! tick
    for tick in {1..15}; do
        sleep 0.2
        kill -0 "$started" 2>/dev/null || { wait "$started"; return; }
    done
}

# Anything added to the installation while the update waited (the user's own
# files, another program's) would go with it: then it is not replaced.
foreign=$(comm -z -23 <(find "$installed" -mindepth 1 -printf '%P\0' 2>/dev/null | LC_ALL=C sort -z) \
                      <(ours | LC_ALL=C sort -z) | tr '\0' '\n')
if [[ -n $foreign ]]; then
    start
    rm -rf -- "$staging" "$workspace"
    exit 0
fi

# Replace the app: the old one stays aside until the new one runs
kept=yes
if ! mv -T -- "$installed" "$staging/previous"; then
    start
elif ! { mv -T -- "$staging/Kestrio.app" "$installed" && start; }; then
    # The new one does not start: the old one comes back
    if [[ -e "$installed" ]]; then mv -T -- "$installed" "$staging/failed"; fi
    if mv -T -- "$staging/previous" "$installed"; then start; else kept=no; fi
fi
# Clean up; the staging folder goes only when it holds no installation that is needed
if [[ $kept == yes ]]; then rm -rf -- "$staging"; fi
rm -rf -- "$workspace"
