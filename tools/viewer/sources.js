// Where the files of a model come from. A source gives the file of a name as a Blob, or null when
// there is none; names are as they stand in an OBJ or MTL, relative to the OBJ.

const baseName = (name) => name.split(/[/\\]/).pop();

// Whether this is the name of a file in the folder of the OBJ: //host/ramp.png would be one of another
// host, and ../ramp.png one of another folder.
export const isPlainName = (name) => /^[^/\\:]+$/.test(name) && name !== '.' && name !== '..';

// The files beside an address, none but those with plain names. read throws an Error in the user's words
// when nothing answers.
export function sourceAtAddress(address) {
  const folder = new URL('.', address);
  return {
    async read(name) {
      if (!isPlainName(name)) {
        return null;
      }
      let response;
      try {
        response = await fetch(new URL(encodeURIComponent(name), folder));
      } catch {
        throw new Error(folder.protocol === 'file:'
          ? 'A page from the disk may not read files by itself: drop them on it.'
          : `Nothing answers at ${folder.host}: is scripts/view still running?`);
      }
      return response.ok ? response.blob() : null;
    },
  };
}

// Files that are there already, found by their bare names, whatever the case, since some file
// systems do not tell viridis.PNG from viridis.png.
class Files {
  files = new Map();

  get objName() {
    return [...this.files.values()].find(isObj)?.name;
  }

  async read(name) {
    return this.files.get(baseName(name).toLowerCase()) ?? null;
  }
}

// Files that the user dropped or picked.
export class DroppedFiles extends Files {
  // Adds files to those of earlier drops; a new OBJ starts afresh.
  add(files) {
    if (files.some(isObj)) {
      this.files.clear();
    }
    for (const file of files) {
      this.files.set(file.name.toLowerCase(), file);
    }
  }
}

// Files inside the page, written there by heatmap --html: script elements with the name of the file
// in data-name and its bytes as base64.
export class FilesInPage extends Files {
  constructor(page) {
    super();
    for (const element of page.querySelectorAll('script[data-name]')) {
      const {name} = element.dataset;
      this.files.set(name.toLowerCase(), new File([bytesOf(element.textContent)], name));
      element.remove();
    }
  }
}

function bytesOf(base64) {
  const text = atob(base64);
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < bytes.length; ++i) {
    bytes[i] = text.charCodeAt(i);
  }
  return bytes;
}

const isObj = (file) => /\.obj$/i.test(file.name);
