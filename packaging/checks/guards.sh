#!/bin/sh
# Every guard of packaging/guards/guards.txt is noticed by a test: each is taken out of a copy of the sources in turn, the
# library is built without it under the sanitizers, and the tests run until one fails.
# usage: guards.sh [NAME...]    all guards, or those named; 1 below 95 % noticed, or when one cannot be taken out or built
# The guards are dealt out to lanes, one for each processor: a copy of the sources with a build of its own, so that each lane
# takes out one guard at a time. QVR_GUARD_LANES sets their number.
set -eu
cd "$(dirname "$0")/../.."

list=packaging/guards/guards.txt
work=$PWD/build/guards
# Folders of tests with the program that each builds, the quick ones first; what a guard names goes before them.
order="toolkit marks image display model platform host extremes kernels tool fuzz faults"
shortest_limit=120 # seconds without an end that count as noticed

target_of() {
    case $1 in
    faults) echo fault_tests ;;
    fuzz) echo fuzz_replay_tests ;;
    kernels) echo kernel_tests ;;
    *) echo "$1_tests" ;;
    esac
}

# build JOBS TARGET...: in the folder of the lane, as all below
build() {
    jobs=$1
    shift
    cmake --build "$lane/build" -j "$jobs" --target "$@" >"$lane/build.log" 2>&1 </dev/null
}

# run ROOM: the test program of a folder; its output is in run.log
run() {
    limit=$(cat "$work/limit-$1" 2>/dev/null || echo 1200)
    rm -rf "$lane/tmp"
    mkdir "$lane/tmp"
    TMPDIR=$lane/tmp timeout -k 5 "$limit" "$lane/build/tests/$1/$(target_of "$1")" --gtest_fail_fast \
        >"$lane/run.log" 2>&1 </dev/null
}

# failed: the test that run.log ends at
failed() {
    name=$(sed -n -E 's/^\[  FAILED  \] ([^ ,]+).*/\1/p' "$lane/run.log" | head -n 1)
    if [ -z "$name" ] && grep -q '^\[  PASSED  \]' "$lane/run.log"; then
        name="what is left at its end"
    elif [ -z "$name" ]; then
        name=$(sed -n -E 's/^\[ RUN      \] (.*)/\1/p' "$lane/run.log" | tail -n 1) # it died in this one
    fi
    echo "${name:-its start}"
}

# The entries of the list: "names" prints name, folders of tests and file of each; "apply" puts one into a file. White
# space counts only as a separator, so that formatting does not disturb the list.
entries() {
    perl -we '
        use strict;
        my ($action, $list, $sources, $wanted) = @ARGV;
        my (@entries, $entry, $part);
        open my $in, "<", $list or die "guards: $list: $!\n";
        while (<$in>) {
            if (/^--- (\S+) (\S+) (\S+)$/) {
                push @entries, $entry = {name => $1, rooms => $2, file => $3, old => "", new => ""};
                $part = "old";
            } elsif (/^---/) { die "guards: $list:$.: not \"--- NAME FOLDERS FILE\"\n" }
            elsif (!$entry || /^# /) { next }
            elsif (/^===$/) { $part = "new" }
            else { $entry->{$part} .= $_ }
        }
        my %seen;
        for (@entries) {
            die "guards: $_->{name} stands twice in $list\n" if $seen{$_->{name}}++;
            if ($action eq "names") { print "$_->{name} $_->{rooms} $_->{file}\n"; next }
            next if $_->{name} ne $wanted;
            local $/;
            open my $file, "<", "$sources/$_->{file}" or die "$_->{file}: $!\n";
            my $text = <$file>;
            my $pattern = join "\\s+", map { quotemeta } split " ", $_->{old};
            die "the entry has no text\n" if $pattern eq "";
            my $count = () = $text =~ /$pattern/g;
            die "its text stands $count times in $_->{file}, not once\n" if $count != 1;
            my $new = $_->{new};
            chomp $new;
            $text =~ s/$pattern/$new/;
            open my $out, ">", "$sources/$_->{file}" or die "$_->{file}: $!\n";
            print $out $text;
            close $out or die "$_->{file}: $!\n";
        }
    ' "$@"
}

# The working tree as git sees it, into a copy whose unchanged files keep their time, so that a second run builds little.
copy_sources() {
    mkdir -p "$lane/src"
    while IFS= read -r file; do
        cmp -s "$file" "$lane/src/$file" && continue
        mkdir -p "$(dirname "$lane/src/$file")"
        cp "$file" "$lane/src/$file"
    done <"$work/files"
    (cd "$lane/src" && find . -type f | sed 's|^\./||' | LC_ALL=C sort) | LC_ALL=C comm -23 - "$work/files" |
        while IFS= read -r file; do rm "$lane/src/$file"; done
}

mkdir -p "$work"
git ls-files --cached --others --exclude-standard | LC_ALL=C sort | while IFS= read -r file; do
    [ ! -f "$file" ] || printf '%s\n' "$file"
done >"$work/files"

entries names $list >"$work/entries"
if [ $# -gt 0 ]; then
    for name in "$@"; do
        grep "^$name " "$work/entries" || { echo "guards: there is no guard \"$name\" in $list" >&2; exit 2; }
    done >"$work/chosen"
else
    cp "$work/entries" "$work/chosen"
fi

export ASAN_OPTIONS="hard_rss_limit_mb=8000:${ASAN_OPTIONS:-}" # a removed bound must not take the machine's memory
if command -v ccache >/dev/null 2>&1 && [ -z "${CMAKE_CXX_COMPILER_LAUNCHER:-}" ]; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi
begun=$(date +%s)
guards=$(wc -l <"$work/chosen")
lanes=${QVR_GUARD_LANES:-$(nproc)}
case $lanes in '' | *[!0-9]* | 0) echo "guards: QVR_GUARD_LANES is a whole number from 1, not \"$lanes\"" >&2; exit 2 ;; esac
[ "$lanes" -le "$guards" ] || lanes=$guards
targets=
for room in $order; do targets="$targets $(target_of "$room")"; done
for number in $(seq "$lanes"); do
    lane=$work/lane$number
    copy_sources
    # The same files are compiled in every lane.
    export CCACHE_BASEDIR="$lane" CCACHE_NOHASHDIR=1
    # shellcheck disable=SC2086 # a list of words
    if ! (cd "$lane/src" && cmake --preset asan -B "$lane/build" -DQVR_WERROR=OFF -DCMAKE_LINK_DEPENDS_NO_SHARED=ON) \
        >"$lane/build.log" 2>&1 || ! build "$(nproc)" $targets; then
        tail -n 40 "$lane/build.log"
        echo "guards: the sources do not build as they are"
        exit 1
    fi
done
lane=$work/lane1
for room in $order; do
    rm -f "$work/limit-$room"
    room_begun=$(date +%s)
    if ! run "$room"; then
        tail -n 40 "$lane/run.log"
        echo "guards: $(target_of "$room") fails with every guard in place: $(failed)"
        exit 1
    fi
    limit=$((4 * ($(date +%s) - room_begun)))
    [ $limit -gt $shortest_limit ] || limit=$shortest_limit
    echo $limit >"$work/limit-$room"
done
echo "guards: all tests pass with every guard in place ($(($(date +%s) - begun)) s)"

# probe ROOMS: says which test notices that a guard is gone
probe() {
    for room in $(echo "$1" | tr , ' ') $order; do
        case " $tried " in *" $room "*) continue ;; esac
        tried="$tried $room"
        if ! build 1 "$(target_of "$room")"; then
            outcome="does not compile"
            return
        fi
        result=0
        run "$room" || result=$?
        [ $result -ne 0 ] || continue
        outcome="noticed by $(target_of "$room"): $(failed)"
        [ $result -ne 124 ] || outcome="$outcome (no end in $limit s)"
        return
    done
}

# walk: one lane's share of the chosen guards, a line for each; "noticed", "missed" or "broken" in its file of outcomes
walk() {
    export CCACHE_BASEDIR="$lane"
    while read -r name rooms file; do
        outcome="NOT NOTICED"
        word=missed
        tried=
        if ! reason=$(entries apply $list "$lane/src" "$name" 2>&1); then
            outcome="cannot be taken out: $reason"
        else
            probe "$rooms"
        fi
        cp "$file" "$lane/src/$file"
        case $outcome in
        noticed*) word=noticed ;;
        "NOT NOTICED") ;;
        *)
            word=broken
            grep -m 3 'error: ' "$lane/build.log" || true
            ;;
        esac
        echo $word >>"$lane/outcomes"
        printf '%-28s %s\n' "$name" "$outcome"
    done <"$lane/chosen"
}

rm -f "$work"/lane*/outcomes
for number in $(seq "$lanes"); do
    lane=$work/lane$number
    sed -n "$number~${lanes}p" "$work/chosen" >"$lane/chosen"
    walk &
done
wait

count() { cat "$work"/lane*/outcomes | grep -c "^$1" || true; }
noticed=$(count noticed)
percent=$((100 * noticed / guards))
echo "$guards guards, $noticed noticed ($percent %), $(($(date +%s) - begun)) s"
[ "$(count broken)" -eq 0 ] && [ "$(count '')" -eq "$guards" ] && [ $percent -ge 95 ]
