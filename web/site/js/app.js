// The page: what the user gives, the run, and what comes of it.
import {site} from '../site.js';
import {byId, make, show, size} from './dom.js';
import {Engine} from './engine.js';
import {describeFailure} from './failure.js';
import {commandLine, kDefaults} from './pipeline.js';
import {safeName} from './programs.js';
import {Results} from './results.js';

const kLargest = 40e6;  // bytes; entries with shifts have a few megabytes at most
const kStepNames = {
  load: 'Loading the tables', convert: 'Reading the shifts', predict: 'Predicting', report: 'Writing the report',
  restraints: 'Writing the restraints',
};
const kPatience = 5000;  // ms for the service worker to get ready before the tables are fetched

const engine = new Engine();
const results = new Results();
let input = null;      // {name, bytes}
let sequence = null;   // the same, or none
let chosen = {chain: '', list: ''};
let running = false;
let started = 0;

// ---- what the user gives ------------------------------------------------------------------------------------------

function job() {
  const options = {...kDefaults, ...chosen, alignLen: Number(byId('align').value)};
  for (const name of ['noproton', 'iso', 'offset']) options[name] = byId(name).checked;
  const given = input ?? {name: 'shifts.str', bytes: new Uint8Array()};
  const sameName = sequence?.name === given.name;  // they share a folder
  return {...given, sequence: sameName ? {...sequence, name: `sequence_${sequence.name}`} : sequence, options};
}

function refresh() {
  byId('command').textContent = commandLine(job());
  byId('chosen').textContent = input ? `${input.name}, ${size(input.bytes.length)}` : 'No file yet';
  byId('start').disabled = running || !input;
  show(byId('stop'), running);
}

function complain(...nodes) {
  byId('problem').replaceChildren(...nodes);
  show(byId('problem'), nodes.length > 0);
  if (nodes.length > 0) byId('problem').focus();
}

const complainPlainly = (text) => complain(make('p', {}, text));

function busy() {
  if (!running) return false;
  byId('hint').textContent = 'A prediction is running. Wait for it, or stop it first; the new file was not taken.';
  return true;
}

function take(name, bytes) {
  input = {name: safeName(name), bytes};
  chosen = {chain: '', list: ''};
  complain();
  show(byId('choices'), false);
  refresh();
}

/** The content of a file; null, with a message, when it cannot be had. */
async function contentOf(file) {
  if (file.size > kLargest) {
    complainPlainly(`${file.name} has ${size(file.size)}. This page reads files of up to ${size(kLargest)}, many ` +
                    'times what an entry with chemical shifts has. If it really is one, the programs on the ' +
                    'command line have no such limit.');
    return null;
  }
  try {
    return new Uint8Array(await file.arrayBuffer());
  } catch {
    complainPlainly(`${file.name} cannot be read. A folder? Drop a single file.`);
    return null;
  }
}

async function takeFile(file) {
  if (!file || busy()) return;
  const bytes = await contentOf(file);
  if (bytes === null || busy()) return;
  byId('paste').value = '';
  take(file.name, bytes);
  byId('start').focus();
}

/** Shifts, and perhaps the sequence that belongs to them. */
function takeDropped(files, text) {
  if (busy()) return;
  const isSequence = ({name}) => files.length > 1 && /\.(seq|fasta|fas?)$/i.test(name);
  const shifts = files.filter((file) => !isSequence(file));
  if (shifts.length > 1) byId('hint').textContent = `Several files: ${shifts[0].name} was taken.`;
  if (shifts.length > 0) takeFile(shifts[0]);
  if (files.some(isSequence)) takeSequence(files.find(isSequence));
  if (files.length > 0 || !text) return;
  byId('paste').value = text;
  takePasted();
}

async function takeSequence(file) {
  const bytes = file ? await contentOf(file) : null;
  sequence = bytes && {name: safeName(file.name), bytes};
  refresh();
}

function takePasted() {
  if (busy()) return;
  const text = byId('paste').value;
  if (text.trim() === '') input = null;
  else take('shifts.txt', new TextEncoder().encode(text));
  refresh();
}

async function takeExample() {
  if (busy()) return;
  try {
    const response = await fetch(site.example);
    if (!response.ok) throw new Error();
    take(site.example.split('/').at(-1), new Uint8Array(await response.arrayBuffer()));
  } catch {
    complainPlainly('The example could not be loaded: no connection.');
    return;
  }
  predict();
}

// ---- the run ------------------------------------------------------------------------------------------------------

function progress(step, line = '') {
  byId('step').textContent = kStepNames[step] ?? step;
  byId('line').textContent = line;
}

engine.addEventListener('loading', ({detail}) => {
  const bar = byId('bar');
  bar.max = detail.total;
  bar.value = detail.bytes;
  byId('loaded').textContent = `${size(detail.bytes)} of ${size(detail.total)}`;
  if (detail.bytes >= detail.total) byId('loaded').textContent = 'Tables loaded.';
});
engine.addEventListener('step', ({detail}) => {
  byId('bar').removeAttribute('value');
  progress(detail.name);
});
engine.addEventListener('line', ({detail}) => { byId('line').textContent = detail.text; });
engine.addEventListener('stored', ({detail}) => tellOffline(detail.kept));

function setRunning(now) {
  running = now;
  started = now ? performance.now() : started;
  show(byId('progress'), now);
  if (now) progress('load');
  refresh();
}

async function predict() {
  if (!input || busy()) return;
  const asked = job();
  complain();
  results.clear();
  byId('hint').textContent = '';
  setRunning(true);
  try {
    finish(asked, await engine.request('predict', {job: asked}));
  } catch (error) {
    complainPlainly(error.message);
  } finally {
    setRunning(false);
  }
}

function finish(asked, outcome) {
  show(byId('choices'), outcome.kind === 'choices');
  if (outcome.kind === 'failed') return complain(...describeFailure(outcome, asked));
  if (outcome.kind === 'choices') return offer(outcome.choices);
  const seconds = ((performance.now() - started) / 1000).toFixed(1);
  results.show(asked, outcome.files, outcome.warnings);
  byId('took').textContent = `Done in ${seconds} s.`;
}

/** The chains and shift lists of the file, to choose from. */
function offer(choices) {
  const rows = choices.map((choice, k) => {
    const button = make('input', {type: 'radio', name: 'choice', id: `choice-${k}`, value: String(k)});
    button.checked = k === 0;
    const parts = [`Chain ${choice.chain}`, choice.chain_name, `list ${choice.list}`, choice.list_name,
                   `${choice.residues} residues`, `${choice.shifts} backbone shifts`];
    return make('li', {}, button, ' ', make('label', {htmlFor: button.id}, parts.filter(Boolean).join(', ')));
  });
  byId('choice-list').replaceChildren(...rows);
  byId('choose').onclick = () => {
    const {chain, list} = choices[Number(document.querySelector('input[name=choice]:checked').value)];
    const several = (name) => new Set(choices.map((choice) => choice[name])).size > 1;
    chosen = {chain: several('chain') ? chain : '', list: several('list') ? list : ''};
    refresh();
    predict();
  };
  byId('choice-0').focus();
}

async function takeCoordinates(file) {
  const bytes = file && !busy() ? await contentOf(file) : null;
  if (!bytes) return;
  try {
    const coordinates = {name: safeName(file.name), bytes};
    const made = await engine.request('coordinates', {files: results.files, coordinates});
    results.add(made.files);
    byId('coordinate-messages').textContent = made.lines.join('\n');
  } catch (error) {
    complainPlainly(error.message);
  }
}

// ---- the page -----------------------------------------------------------------------------------------------------

async function tellOffline(kept) {
  const keeps = kept && navigator.serviceWorker;
  if (keeps) await navigator.serviceWorker.ready;
  byId('offline').textContent = keeps ? 'This page now works without a connection.' :
                                        'The browser does not keep this page: opening it again needs a connection.';
}

function listenToDrops() {
  const zone = byId('drop');
  const mark = (on) => zone.classList.toggle('over', on);
  addEventListener('dragover', (event) => { event.preventDefault(); mark(true); });
  addEventListener('dragleave', (event) => { if (event.relatedTarget === null) mark(false); });
  addEventListener('drop', (event) => {
    event.preventDefault();
    mark(false);
    takeDropped([...event.dataTransfer.files], event.dataTransfer.getData('text'));
  });
}

async function copyCommand() {
  try {
    await navigator.clipboard.writeText(byId('command').textContent);
    byId('copied').textContent = 'Copied.';
  } catch {
    byId('copied').textContent = 'Not allowed by the browser: mark the line and copy it.';
  }
}

function listen() {
  listenToDrops();
  const onFile = (id, use) => byId(id).addEventListener('change', ({target}) => use(target.files[0]));
  onFile('file', takeFile);
  onFile('sequence', takeSequence);
  onFile('coordinates', takeCoordinates);
  byId('file').addEventListener('click', ({target}) => { target.value = ''; });  // the same file again is a change
  byId('paste').addEventListener('input', takePasted);
  byId('example').addEventListener('click', takeExample);
  byId('start').addEventListener('click', predict);
  byId('stop').addEventListener('click', () => engine.stop('Stopped.'));
  byId('copy').addEventListener('click', copyCommand);
  byId('zip').addEventListener('click', () => results.saveAll());
  for (const id of ['noproton', 'iso', 'offset', 'align']) byId(id).addEventListener('change', refresh);
}

async function keepOffline() {
  if (!navigator.serviceWorker) return;
  try {
    await navigator.serviceWorker.register('sw.js');
    await Promise.race([navigator.serviceWorker.ready, new Promise((late) => setTimeout(late, kPatience))]);
  } catch { /* the page works all the same, with a connection */ }
}

listen();
refresh();
byId('version').textContent = `ORBEL-N ${site.version}, installation ${site.identity}`;
byId('download-size').textContent = size(site.totalBytes);
// The tables come while the user looks for the file, after the service worker, so that nothing is fetched twice.
keepOffline().then(() => engine.request('prepare')).catch((error) => complainPlainly(error.message));
