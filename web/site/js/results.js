// The results of one run: what it says, the report to look at, and the files to take away.
import {zipSync} from '../vendor/fflate.js';
import {byId, make, show, size} from './dom.js';
import {kRestraints, kTables} from './pipeline.js';

const kContents = {
  'pred.tab': 'phi, psi, their errors and the class of every residue',
  'predChi1.tab': 'chi1 rotamers',
  'predAll.tab': 'the matches behind each prediction',
  'predABP.tab': 'the map over phi and psi, 324 boxes a residue',
  'predSS.tab': 'secondary structure',
  'predS2.tab': 'order parameters',
  'predAdjCS.tab': 'secondary shifts',
  'report.html': 'the report, one page that works anywhere',
  'report.json': 'everything as JSON',
  'report.tsv': 'one row a residue',
  'input.tab': 'the shifts as the prediction read them',
  'convert.log': 'messages of the conversion',
  'orbeln.log': 'messages of the prediction, the check of the shifts among them',
  ...Object.fromEntries(kRestraints.map(({file, label}) => [file, `dihedral restraints for ${label}`])),
};

const kGroups = [
  ['Restraints', kRestraints.map(({file}) => file)],
  ['Report', ['report.html', 'report.json', 'report.tsv']],
  ['Tables', kTables],
  ['Input and messages', ['input.tab', 'convert.log', 'orbeln.log']],
];

function kindOf(name) {
  if (name.endsWith('.html')) return 'text/html';
  return name.endsWith('.json') ? 'application/json' : 'text/plain';
}

/** The name of the user's file without its ending, as the result folder and the archive are called. */
function stem(name) {
  const plain = name.replace(/\.[^.]*$/, '').replace(/[^\w.-]/g, '_');
  return plain === '' ? 'shifts' : plain;
}

export class Results {
  #urls = [];
  #job = null;
  files = new Map();

  clear() {
    this.#urls.forEach((url) => URL.revokeObjectURL(url));
    this.#urls = [];
    this.files = new Map();
    byId('report').removeAttribute('srcdoc');
    byId('results').hidden = true;
    byId('coordinate-messages').textContent = '';
    byId('coordinates').value = '';
  }

  show(job, files, notes) {
    this.clear();
    this.#job = job;
    this.files = files;
    byId('result-title').textContent = `Results: ${job.name}`;
    byId('notes').replaceChildren(...notes.map((line) => make('li', {}, line)));
    show(byId('notes-box'), notes.length > 0);
    // No script and no access from inside: the report is a page of its own, and the frame keeps it so.
    if (files.has('report.html')) byId('report').srcdoc = new TextDecoder().decode(files.get('report.html'));
    show(byId('report-box'), files.has('report.html'));
    this.#list();
    byId('results').hidden = false;
    byId('result-title').focus();
  }

  add(files) {
    files.forEach((bytes, name) => this.files.set(name, bytes));
    this.#list();
  }

  #link(name, bytes, text) {
    const url = URL.createObjectURL(new Blob([bytes], {type: kindOf(name)}));
    this.#urls.push(url);
    return make('a', {href: url, download: name}, text ?? name);
  }

  #list() {
    const groups = kGroups.map(([title, names]) => {
      const rows = names.filter((name) => this.files.has(name)).map((name) => {
        const bytes = this.files.get(name);
        return make('li', {}, this.#link(name, bytes), ' ',
                    make('span', {className: 'soft'}, `${kContents[name]}, ${size(bytes.length)}`));
      });
      return make('section', {}, make('h3', {}, title), make('ul', {className: 'files'}, ...rows));
    });
    byId('downloads').replaceChildren(...groups);
  }

  /** Everything in one archive, in a folder named after the input; made when it is asked for. */
  saveAll() {
    const folder = `${stem(this.#job.name)}_orbeln`;
    const entries = [...this.files].map(([name, bytes]) => [`${folder}/${name}`, bytes]);
    const archive = zipSync(Object.fromEntries(entries), {level: 6});
    this.#link(`${folder}.zip`, archive).click();
  }
}
