// From the user's file to the results: the steps, their arguments and their files are those of `orbeln-run`, so that
// the page and the command line give the same bytes.
import {paths} from './programs.js';

export const kRestraints = [
  {format: 'xplor', file: 'restraints.tbl', label: 'X-PLOR, CNS, Xplor-NIH', atoms: false},
  {format: 'cyana', file: 'restraints.aco', label: 'CYANA', atoms: false},
  {format: 'nef', file: 'restraints.nef', label: 'NEF', atoms: false},
  {format: 'gromacs', file: 'restraints.itp', label: 'GROMACS', atoms: true},
  {format: 'amber', file: 'restraints.rst', label: 'Amber', atoms: true},
];

export const kTables = ['pred.tab', 'predChi1.tab', 'predAll.tab', 'predABP.tab', 'predSS.tab', 'predS2.tab',
                        'predAdjCS.tab'];

const kChoiceNeeded = 3;

/** What a job asks for besides its file. */
export const kDefaults = {noproton: false, iso: false, offset: false, alignLen: 7, chain: '', list: ''};

function titleOf(job) {
  let title = job.name;
  if (job.options.chain) title += `, chain ${job.options.chain}`;
  if (job.options.list) title += `, list ${job.options.list}`;
  return title;
}

/** The prediction cuts its command line at hyphens and takes titles with single blanks. */
function predictionTitle(title) {
  return title.replace(/-/g, '_').replace(/[\u0000-\u0020]+/g, ' ').trim();
}

function convertArguments(job) {
  const {chain, list} = job.options;
  return [...(chain ? ['--chain', chain] : []), ...(list ? ['--list', list] : []),
          ...(job.sequence ? ['--sequence', job.sequence.name] : [])];
}

function predictArguments(job) {
  const {iso, noproton, offset, alignLen} = job.options;
  const title = predictionTitle(titleOf(job));
  return ['-in', 'input.tab', ...(title ? ['-inTitle', title] : []), ...(iso ? ['-iso'] : []),
          ...(noproton ? ['-noproton'] : []), ...(offset ? ['-offset'] : []),
          ...(alignLen !== kDefaults.alignLen ? ['-alignLen', String(alignLen)] : [])];
}

/** A word of a POSIX shell's command line. */
function quoted(word) {
  return /^[\w.,/=+:@%-]+$/.test(word) ? word : `'${word.replace(/'/g, `'\\''`)}'`;
}

function fileWord(name) {
  return quoted(name.startsWith('-') ? `./${name}` : name);
}

/** The command that does the same on a computer where the programs are installed. */
export function commandLine(job) {
  const {noproton, iso, offset, alignLen, chain, list} = job.options;
  const words = ['orbeln-run', fileWord(job.name), '-o result'];
  if (chain) words.push('--chain', quoted(chain));
  if (list) words.push('--list', quoted(list));
  if (job.sequence) words.push('--sequence', fileWord(job.sequence.name));
  if (iso) words.push('--iso');
  if (noproton) words.push('--noproton');
  if (offset) words.push('--offset');
  words.push('--restraints xplor,cyana,nef');
  if (alignLen !== kDefaults.alignLen) words.push('--', '-alignLen', String(alignLen));
  return words.join(' ');
}

/** The tab-separated list of chains and shift lists as objects. */
export function parseChoices(lines) {
  const [header, ...rows] = lines.filter((line) => line !== '').map((line) => line.split('\t'));
  return rows.map((cells) => Object.fromEntries(header.map((name, k) => [name, cells[k] ?? ''])));
}

/** What a failed step tells: its messages, and why the run ended. */
function failure(step, program, result, missing) {
  const why = result.status !== 0 ? `${program} ended with status ${result.status}` : `${program} wrote no ${missing}`;
  return {kind: 'failed', step, lines: result.lines.filter((line) => line.trim() !== '').slice(-20), why};
}

export class Pipeline {
  /** @param report {step(name), line(text)}: who hears about the progress */
  constructor(programs, report) {
    this.programs = programs;
    this.report = report;
  }

  /**
   * @param job {name, bytes, sequence: {name, bytes} or null, options}
   * @returns {kind: 'choices', choices} | {kind: 'failed', step, lines, why} | {kind: 'done', files, warnings}
   */
  async run(job) {
    const converted = await this.convert(job);
    if (converted.kind !== 'done') return converted;
    this.report.step('predict');
    const predicted = await this.step('orbeln', predictArguments(job), converted.files);
    const missing = kTables.find((name) => !predicted.work.get(name)?.length);
    if (predicted.status !== 0 || missing) return failure('predict', 'orbeln', predicted, missing);
    const files = predicted.work;
    files.set('orbeln.log', this.log(predicted));
    const problems = await this.finish(job, files);
    return {kind: 'done', files, warnings: [...converted.warnings, ...problems]};
  }

  async convert(job) {
    this.report.step('convert');
    const inputs = new Map([[job.name, job.bytes]]);
    if (job.sequence) inputs.set(job.sequence.name, job.sequence.bytes);
    const given = convertArguments(job);
    const run = (first) => this.programs.run({
      program: 'orbeln-convert', args: [...first, ...given, '--', job.name], inputs, inside: false,
      onLine: (line) => this.report.line(line),
    });
    const result = await run(['--output', `${paths.work}/input.tab`]);
    if (result.status === kChoiceNeeded) {
      const listed = await run(['--choices']);
      if (listed.status === 0) return {kind: 'choices', choices: parseChoices(listed.stdout)};
    }
    if (result.status !== 0) return failure('convert', 'orbeln-convert', result);
    result.work.set('convert.log', this.log(result));
    const told = /warning: |^(Taken|Renamed|Skipped|Hint): /;
    return {kind: 'done', files: result.work, warnings: result.lines.filter((line) => told.test(line))};
  }

  /** Report and restraints. Returns what went wrong; the tables are worth having all the same. */
  async finish(job, files) {
    const problems = [];
    const make = async (program, args, products) => {
      const result = await this.step(program, args, files);
      for (const name of products) {
        if (result.work.has(name)) files.set(name, result.work.get(name));
      }
      if (result.status !== 0) problems.push(...result.lines, `${program} ended with status ${result.status}`);
    };
    this.report.step('report');
    await make('orbeln-report', ['.', '-o', 'report.html', '--json', 'report.json', '--tsv', 'report.tsv', '--log',
                                 'orbeln.log', '--title', titleOf(job)],
               ['report.html', 'report.json', 'report.tsv']);
    this.report.step('restraints');
    for (const {format, file, atoms} of kRestraints) {
      if (!atoms) await make('orbeln-restraints', this.restraintArguments(format, file), [file]);
    }
    return problems;
  }

  /** Restraints that need the atom numbers of a structure. */
  async withCoordinates(files, coordinates) {
    const made = new Map();
    const lines = [];
    const name = `coordinates${/\.gro$/i.test(coordinates.name) ? '.gro' : '.pdb'}`;
    for (const {format, file, atoms} of kRestraints) {
      if (!atoms) continue;
      const work = new Map([...files, [name, coordinates.bytes]]);
      const args = [...this.restraintArguments(format, file), '--coordinates', name];
      const result = await this.step('orbeln-restraints', args, work);
      if (result.status === 0 && result.work.has(file)) made.set(file, result.work.get(file));
      lines.push(...result.lines.map((line) => line.replaceAll(name, coordinates.name)));
    }
    return {files: made, lines};
  }

  restraintArguments(format, file) {
    return ['pred.tab', '--chi1', 'predChi1.tab', '--format', format, '-o', file];
  }

  step(program, args, work) {
    return this.programs.run({program, args, work, onLine: (line) => this.report.line(line)});
  }

  log(result) {
    return new TextEncoder().encode(result.lines.map((line) => `${line}\n`).join(''));
  }
}
