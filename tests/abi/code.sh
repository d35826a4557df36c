#!/usr/bin/env bash
# What the machine code may contain: no fused multiply-add anywhere, each instruction set's code in
# its own object files, nothing that the linker could share between them, and little of it in all.
# Usage: code.sh LIBRARY OBJECT...
set -euo pipefail
library=$1
shift
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0

disassemble() { objdump --disassemble --no-show-raw-insn "$1" | grep $'^ *[0-9a-f]*:\t' | cut -f2-; }

refuse() {  # what pattern file: fails when a line of the file matches
  if grep -E -m3 -- "$2" "$3" >"$scratch/hits"; then
    echo "$1:"
    cat "$scratch/hits"
    failed=1
  fi
}

disassemble "$library" >"$scratch/library"
if [ "$(wc -l <"$scratch/library")" -lt 1000 ]; then
  echo "$library disassembles to almost nothing"
  exit 1
fi
refuse "fused multiply-add in the library" '^vfn?m(add|sub)' "$scratch/library"

# SSE3 to SSE4.2, bit manipulation; mnemonics as objdump writes them. (tzcnt is left out: on an older
# processor it runs as bsf, and compilers use it so.)
after_sse2='^(addsub|hadd|hsub|movddup|movs[hl]dup|lddqu|pshufb|phadd|phsub|pabs|palignr|psign'
after_sse2+='|pmaddubs|pmulhrs|pmulld|pm(in|ax)(s[bd]|u[wd])|ptest|round|blend|pblend|dpp|popcnt'
after_sse2+='|p(ext|ins)r[bdq]|pmov[sz]x|insertps|extractps|mpsadbw|phmin|pcmp(gt|eq)q|pcmp[ei]str'
after_sse2+='|packusdw|pmuldq|movntdqa|crc32|lzcnt|(andn|bextr|blsi|blsr|blsmsk|mulx|pdep|pext|rorx'
after_sse2+='|sarx|shlx|shrx)[lq]? )'

sets=0
for object in "$@"; do
  disassemble "$object" >"$scratch/code"
  case $object in
    *operations/avx512*) sets=$((sets + 1)) ;;
    *operations/avx2*)
      sets=$((sets + 1))
      refuse "AVX-512 in $object" '%zmm|%k[0-7]|%[xy]mm(1[6-9]|2[0-9]|3[01])' "$scratch/code"
      ;;
    *)
      case $object in *operations/base*) sets=$((sets + 1)) ;; esac
      refuse "AVX in $object" '^v|%[yz]mm|%k[0-7]' "$scratch/code"
      refuse "more than SSE2 in $object" "$after_sse2" "$scratch/code"
      ;;
  esac
  nm "$object" >"$scratch/names"
  refuse "weak symbols in $object, which another set's copy could replace" ' [VWuvw] ' "$scratch/names"
  case $object in
    *operations/base* | *operations/avx*)
      if [ "$(awk '$2 ~ /[A-TV-Z]/' "$scratch/names" | grep -vc ' U ')" != 1 ]; then
        echo "$object shows more than its one table of operations:"
        awk '$2 ~ /[A-TV-Z]/' "$scratch/names"
        failed=1
      fi
      # Seven ways to sample slice stacks (all but bits), seven to sample blocked volumes.
      asking=$(objdump --disassemble --no-show-raw-insn "$object" |
        awk '/^[0-9a-f]+ </ { counted = 0 } /\tprefetch/ && !counted { counted = 1; ++n } END { print n + 0 }')
      if [ "$asking" -lt 14 ]; then
        echo "$object asks for lines of the cache in $asking functions only: the compiler drops calls of" \
          "functions that do nothing else"
        failed=1
      fi
      ;;
  esac
done
if [ $sets != 3 ]; then
  echo "expected the objects of three instruction sets, found $sets"
  failed=1
fi

text=$(size --format=sysv "$library" | awk '$1 == ".text" { print $2 }')
if [ "$text" -ge 1048576 ]; then
  echo "the library's code takes $text bytes, 1 MiB or more"
  failed=1
fi
exit $failed
