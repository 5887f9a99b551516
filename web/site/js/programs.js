// Runs the command-line programs: a fresh WebAssembly instance each time, with a file system of its own in memory.

const kWork = '/result';
const kInputs = '/inputs';

/** A message that is meant for the user as it stands. */
export class PlainError extends Error {}

/** The name under which the programs see a user's file: what a file system takes, and not a way to another folder. */
export function safeName(name) {
  const plain = name.replace(/[\u0000-\u001f\u007f/\\]/g, '_').slice(-120);
  return plain === '' || plain === '.' || plain === '..' ? 'shifts.txt' : plain;
}

export const kNoMemory = 'The browser does not give this page the memory that a run needs (about 500 MB). Close ' +
                         'other pages and try again, or use a computer with more memory.';

/** Whether the browser refused memory: browsers tell in different words. */
export function isMemoryProblem(error) {
  return /memory|allocat|array length/i.test(String(error?.message));
}

function fill(FS, folder, files) {
  FS.mkdirTree(folder);
  for (const [name, bytes] of files) {
    const path = `${folder}/${name}`;
    FS.mkdirTree(path.slice(0, path.lastIndexOf('/')));
    FS.writeFile(path, bytes, {canOwn: true});  // shared with later runs: the programs only read these
  }
}

function filesIn(FS, folder) {
  const files = new Map();
  for (const name of FS.readdir(folder)) {
    if (name === '.' || name === '..') continue;
    files.set(name, FS.readFile(`${folder}/${name}`));
  }
  return files;
}

/** A fresh instance; the glue code would keep the fault of an instantiation to itself and wait forever. */
function instantiate(factory, wasm, settings) {
  return new Promise((resolve, reject) => {
    const instantiateWasm = (imports, ready) => {
      try {
        const made = new WebAssembly.Instance(wasm, imports);
        ready(made, wasm);
        return made.exports;
      } catch (error) {
        reject(error);
        throw error;
      }
    };
    factory({...settings, instantiateWasm}).then(resolve, reject);
  });
}

export class Programs {
  /**
   * @param load name => Promise of {factory, wasm}: Emscripten's module factory and the compiled module
   * @param installation Map of path => bytes: the tables, seen by the programs in /installation
   */
  constructor(load, installation) {
    this.load = load;
    this.installation = installation;
  }

  /**
   * @param run {program, args, inputs, work, inside, onLine}: the user's files (Map), the files of the working folder
   *     (Map), whether the program starts in the working folder or beside the inputs, and who hears every line
   * @returns {status, lines, stdout, work}: the working folder as the program left it
   */
  async run({program, args, inputs = new Map(), work = new Map(), inside = true, onLine = () => {}}) {
    const {factory, wasm} = await this.load(program);
    const lines = [];
    const stdout = [];
    const say = (line, out) => {
      lines.push(line);
      if (out) stdout.push(line);
      onLine(line);
    };
    try {
      const instance = await instantiate(factory, wasm, {
        thisProgram: program,
        noInitialRun: true,
        preRun: [({ENV}) => { ENV.ORBELN_DIR = '/installation'; }],
        print: (line) => say(line, true),
        printErr: (line) => say(line, false),
      });
      const {FS} = instance;
      fill(FS, '/installation', this.installation);
      fill(FS, kInputs, inputs);
      fill(FS, kWork, work);
      FS.chdir(inside ? kWork : kInputs);
      const status = instance.callMain(args);
      return {status, lines, stdout, work: filesIn(FS, kWork)};
    } catch (error) {
      if (isMemoryProblem(error)) throw new PlainError(kNoMemory);
      throw new PlainError(`${program} ended unexpectedly: ${error?.message ?? error}`);
    }
  }
}

export const paths = {work: kWork, inputs: kInputs};
