// What went wrong: the messages as the programs say them, with the lines of the user's file that they name.
import {make} from './dom.js';

const kAround = 1, kLongest = 160, kMostPlaces = 3;

const kSteps = {convert: 'The file could not be converted.', predict: 'The prediction failed.'};

/** Line numbers of `name` that the messages mention, each once. */
export function placesIn(lines, name) {
  const places = new Set();
  for (const line of lines) {
    let at = line.indexOf(`${name}:`);
    for (; at >= 0; at = line.indexOf(`${name}:`, at + 1)) {
      const number = /^:(\d+)/.exec(line.slice(at + name.length));
      if (number) places.add(Number(number[1]));
    }
  }
  return [...places].slice(0, kMostPlaces);
}

function excerpt(text, number) {
  const all = text.split(/\r\n|\r|\n/);
  if (number < 1 || number > all.length) return null;
  const list = make('div', {className: 'excerpt', tabIndex: 0, role: 'group', ariaLabel: `Line ${number} of the file`});
  for (let k = Math.max(1, number - kAround); k <= Math.min(all.length, number + kAround); ++k) {
    const line = all[k - 1];
    const shown = line.length > kLongest ? `${line.slice(0, kLongest)} ...` : line;
    list.append(make('div', {className: k === number ? 'named' : ''}, make('span', {className: 'number'}, String(k)),
                     make('code', {}, shown)));
  }
  return list;
}

/** Nodes that tell about the failed outcome of a job. */
export function describeFailure(outcome, job) {
  const nodes = [make('p', {}, make('strong', {}, kSteps[outcome.step] ?? 'The run failed.'))];
  nodes.push(make('pre', {tabIndex: 0, ariaLabel: 'Messages of the program', role: 'group'},
                  [...outcome.lines, outcome.why].join('\n')));
  const places = placesIn(outcome.lines, job.name);
  if (places.length > 0) {
    const text = new TextDecoder().decode(job.bytes);
    nodes.push(...places.map((number) => excerpt(text, number)).filter(Boolean));
  }
  return nodes;
}
