# For the scripts beside this folder: the seeds of a fuzz target, one archive per target, the same bytes
# for the same seeds.

# unpack_corpus TARGET FOLDER: its seeds into the folder, which is made.
unpack_corpus() {
  mkdir -p "$2"
  if [ -f "$root/fuzz/corpus/$1.tar.gz" ]; then
    tar -xzf "$root/fuzz/corpus/$1.tar.gz" -C "$2"
  fi
}

# pack_corpus TARGET FOLDER: the files of the folder become its seeds.
pack_corpus() {
  local archive=$root/fuzz/corpus/$1.tar.gz
  (cd "$2" && find . -type f -printf '%P\n') |
    LC_ALL=C sort |
    tar -C "$2" --mtime=@0 --owner=0 --group=0 --numeric-owner --mode=644 -cf - -T - |
    gzip -9n >"$archive.new"
  mv "$archive.new" "$archive"
}
