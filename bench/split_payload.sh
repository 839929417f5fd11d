#!/usr/bin/env bash
# Pack and unpack of a payload beyond one DICOM value (4.7 GiB by default, two parts), on an XFS
# image with reflink and on an ext4 image, beside cp and openssl's SHA-256 of the same bytes.
# Root only (loop mounts). Caches are warm: every figure is the second run of its command.
#   bench/split_payload.sh [TOOL] [SCRATCH] [SIZE_MIB]
# TOOL defaults to build/dicapsule, SCRATCH to /tmp (it needs about 3 x SIZE of free space: the
# ext4 image holds the payload, the packed parts and the restored copy), SIZE_MIB to 4813 (4.7 GiB).
set -euo pipefail

here=$(cd "$(dirname "$0")/.." && pwd)
tool=$(realpath "${1:-$here/build/dicapsule}")
scratch=${2:-/tmp}
size_mib=${3:-4813}
metadata=$here/examples/metadata.xml
work=$(mktemp -d "$scratch/dicapsule-split-XXXXXX")
mounted=()
cleanup() {
    cd /
    for m in "${mounted[@]}"; do umount "$m" 2>/dev/null || true; done
    rm -rf "$work"
}
trap cleanup EXIT

# Seconds and peak RSS (MiB) of the second of two runs of a command; $prepare runs before each.
measure() {
    local label=$1; shift
    local report
    for _ in 1 2; do
        eval "$prepare"
        /usr/bin/time -o "$work/time" -f "%e %M" "$@" >/dev/null 2>&1
    done
    read -r seconds kib < "$work/time"
    printf '| %s | %s | %s | %s |\n' "$fs" "$label" "$seconds" "$((kib / 1024))"
}

echo "| file system | command | seconds | peak RSS MiB |"
echo "|---|---|---|---|"
for fs in xfs ext4; do
    image=$work/$fs.img mount=$work/$fs
    truncate -s $((size_mib * 3 + 2048))M "$image"
    mkdir "$mount"
    if [ "$fs" = xfs ]; then mkfs.xfs -q -m reflink=1 "$image"; else mkfs.ext4 -q "$image"; fi
    mount -o loop "$image" "$mount"
    mounted+=("$mount")
    cd "$mount"
    # Random bytes, fast: AES-CTR of zeros.
    head -c "${size_mib}M" /dev/zero | openssl enc -aes-128-ctr -nosalt -pass pass:split -pbkdf2 2>/dev/null |
        head -c "${size_mib}M" > payload.bin
    sync
    prepare="rm -f copy.bin"
    measure "cp" cp payload.bin copy.bin
    prepare="rm -f copy.bin"
    measure "openssl dgst -sha256" openssl dgst -sha256 payload.bin
    prepare="rm -f out.dcm out.2.dcm"
    measure "pack (two parts, digests)" "$tool" pack -i payload.bin -m "$metadata" -o out.dcm
    prepare="rm -f out.dcm out.2.dcm"
    measure "pack --no-digest" "$tool" pack -i payload.bin -m "$metadata" -o out.dcm --no-digest
    "$tool" pack -i payload.bin -m "$metadata" -o out.dcm -f
    prepare="rm -f back.bin"
    measure "unpack (digests checked)" "$tool" unpack -i out.2.dcm -o back.bin
    prepare="rm -f back.bin"
    measure "unpack --no-verify" "$tool" unpack -i out.2.dcm -o back.bin --no-verify
    cmp payload.bin back.bin
    cd "$work"
    umount "$mount"
    mounted=()
    rm -f "$image"
done
