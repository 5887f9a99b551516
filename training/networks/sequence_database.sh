#!/bin/sh
# BLAST database for the profiles of the sequence networks: the annotated Swiss-Prot sequences (January 2014) that
# Debian's metastudent-data carries, one per cluster of 50 % identity.
# Needs ncbi-blast+, mmseqs2 and metastudent-data.   sequence_database.sh NAME
set -eu
name=$1
source=${METASTUDENT:-/usr/share/metastudent-data/dataset_201401/MFO/goasp.fasta}
blastdbcmd -db "$source" -entry all -outfmt %f |
    awk -F '|' '/^>/ { print ">g_" substr($1, 2); next } { print }' > "$name.all.fa"
mmseqs easy-linclust "$name.all.fa" "$name.c50" "$name.tmp" --min-seq-id 0.5 -c 0.8 --cov-mode 1 --threads 1 -v 1
mv "$name.c50_rep_seq.fasta" "$name.fa"
rm -rf "$name.all.fa" "$name.tmp" "$name".c50_*
makeblastdb -in "$name.fa" -dbtype prot -out "$name"
