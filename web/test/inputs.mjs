// Inputs of the tests, made from the example: two chains in NEF and NMR-STAR, a long chain, broken and odd files.
import fs from 'node:fs';

export const kExample = 'examples/ubiquitin/ubiquitin.tab';

const kNames = {A: 'ALA', R: 'ARG', N: 'ASN', D: 'ASP', C: 'CYS', Q: 'GLN', E: 'GLU', G: 'GLY', H: 'HIS', I: 'ILE',
                L: 'LEU', K: 'LYS', M: 'MET', F: 'PHE', P: 'PRO', S: 'SER', T: 'THR', W: 'TRP', Y: 'TYR', V: 'VAL'};

function example() {
  const lines = fs.readFileSync(kExample, 'utf8').split('\n');
  const sequence = lines.filter((line) => line.startsWith('DATA SEQUENCE'))
      .map((line) => line.slice(14).replaceAll(' ', '')).join('');
  const rows = lines.map((line) => /^ +(\d+) +(\w) +(\w+) +([\d.]+)$/.exec(line)).filter(Boolean)
      .map(([, resid, letter, atom, shift]) => ({resid: Number(resid), letter, atom, shift}));
  return {sequence, rows};
}

/** The example's chain several times in a row. */
export function longTable(copies) {
  const {sequence, rows} = example();
  const all = [];
  for (let k = 0; k < copies; ++k) {
    for (const row of rows) {
      all.push(`${row.resid + k * sequence.length} ${row.letter} ${row.atom} ${row.shift}`);
    }
  }
  return `DATA FIRST_RESID 1\nDATA SEQUENCE ${sequence.repeat(copies)}\n\nVARS RESID RESNAME ATOMNAME SHIFT\n` +
         `FORMAT %4d %1s %4s %8.3f\n\n${all.join('\n')}\n`;
}

const nefAtom = (atom) => atom === 'HN' ? 'H' : atom;

/** Chains of the given lengths, cut from the example. */
export function nef(chains) {
  const {sequence, rows} = example();
  const residues = [], shifts = [];
  for (const [chain, length] of chains) {
    for (let k = 1; k <= length; ++k) {
      residues.push(`${residues.length + 1} ${chain} ${k} ${kNames[sequence[k - 1]]} middle .`);
    }
    for (const row of rows.filter(({resid}) => resid <= length)) {
      shifts.push(`${chain} ${row.resid} ${kNames[row.letter]} ${nefAtom(row.atom)} ${row.shift} .`);
    }
  }
  const tags = (category, names) => names.map((name) => `      _${category}.${name}`).join('\n');
  return `data_test
save_nef_nmr_meta_data
   _nef_nmr_meta_data.sf_category nef_nmr_meta_data
   _nef_nmr_meta_data.format_name nmr_exchange_format
   _nef_nmr_meta_data.format_version 1.1
save_
save_nef_molecular_system
   _nef_molecular_system.sf_category nef_molecular_system
   loop_
${tags('nef_sequence', ['index', 'chain_code', 'sequence_code', 'residue_name', 'linking', 'residue_variant'])}
${residues.join('\n')}
   stop_
save_
save_nef_chemical_shift_list_main
   _nef_chemical_shift_list.sf_category nef_chemical_shift_list
   loop_
${tags('nef_chemical_shift', ['chain_code', 'sequence_code', 'residue_name', 'atom_name', 'value',
                              'value_uncertainty'])}
${shifts.join('\n')}
   stop_
save_
`;
}

/** The example as an NMR-STAR 3 entry whose title is HTML. */
export function star() {
  const {sequence, rows} = example();
  const residues = [...sequence].map((letter, k) => `1 ${k + 1} ${kNames[letter]}`);
  const shifts = rows.map((row, k) =>
      `${k + 1} 1 1 ${row.resid} ${kNames[row.letter]} ${nefAtom(row.atom)} ${row.shift} 1 1`);
  const tags = (category, names) => names.map((name) => `_${category}.${name}`).join('\n');
  return `data_1
save_entry
_Entry.Sf_category entry_information
_Entry.ID 1
_Entry.Title '<img src=x onerror="document.title=1">'
_Entry.NMR_STAR_version 3.2
save_
save_protein
_Entity.Sf_category entity
_Entity.ID 1
_Entity.Name '<b>protein</b>'
_Entity.Polymer_type polypeptide(L)
loop_
${tags('Entity_comp_index', ['Entity_ID', 'ID', 'Comp_ID'])}
${residues.join('\n')}
stop_
save_
save_shifts
_Assigned_chem_shift_list.Sf_category assigned_chemical_shifts
_Assigned_chem_shift_list.ID 1
loop_
${tags('Atom_chem_shift', ['ID', 'Entity_assembly_ID', 'Entity_ID', 'Comp_index_ID', 'Comp_ID', 'Atom_ID', 'Val',
                           'Ambiguity_code', 'Assigned_chem_shift_list_ID'])}
${shifts.join('\n')}
stop_
save_
`;
}
