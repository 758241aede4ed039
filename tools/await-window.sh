# Sourced by the scripts that drive the window.

# await TITLE: waits for a window whose title begins with the text.
await() {
    for _ in $(seq 150); do
        xdotool search --onlyvisible --name "^$1" >/dev/null 2>&1 && return 0
        sleep 0.1
    done
    echo "The window \"$1\" did not appear." >&2
    return 1
}
