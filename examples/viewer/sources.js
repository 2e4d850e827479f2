// Where the files of a model come from. A source gives the file of a name as a Blob, or null when
// there is none; names are as they stand in an OBJ or MTL, relative to the OBJ.

const baseName = (name) => name.split(/[/\\]/).pop();

// The files beside an address. read rejects when the server cannot be reached.
export function sourceAtAddress(address) {
  const folder = new URL('.', address);
  return {
    async read(name) {
      const path = name.split(/[/\\]/).map(encodeURIComponent).join('/');
      const response = await fetch(new URL(path, folder));
      return response.ok ? response.blob() : null;
    },
  };
}

// Files that the user dropped or picked: found by their bare names, whatever the case, since some
// file systems do not tell viridis.PNG from viridis.png.
export class DroppedFiles {
  #files = new Map();

  // Adds files to those of earlier drops; a new OBJ starts afresh.
  add(files) {
    if (files.some(isObj)) {
      this.#files.clear();
    }
    for (const file of files) {
      this.#files.set(file.name.toLowerCase(), file);
    }
  }

  get objName() {
    return [...this.#files.values()].find(isObj)?.name;
  }

  async read(name) {
    return this.#files.get(baseName(name).toLowerCase()) ?? null;
  }
}

const isObj = (file) => /\.obj$/i.test(file.name);
