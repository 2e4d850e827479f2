// serve.js DIR [PORT]: serves the viewer, and the files of DIR beside it, on this machine only.

import {readdirSync} from 'node:fs';
import {createServer} from 'node:http';
import {fileURLToPath} from 'node:url';
import sirv from 'sirv';

// Resolves to the server and its address. Port 0 takes any that is free.
export function serve(directory, port) {
  // dev: look at the disk for each request, for results change while the page is open.
  const page = sirv(fileURLToPath(new URL('.', import.meta.url)), {dev: true});
  const results = sirv(directory, {dev: true});
  const server = createServer((request, response) => {
    page(request, response, () => results(request, response));
  });
  return new Promise((resolve, reject) => {
    server.once('error', reject);
    server.listen(port, '127.0.0.1', () => {
      resolve({server, address: `http://127.0.0.1:${server.address().port}/`});
    });
  });
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  const [directory, port = '8000'] = process.argv.slice(2);
  try {
    const {address} = await serve(directory, Number(port));
    const names = readdirSync(directory).filter((name) => /\.obj$/i.test(name)).sort();
    for (const name of names) {
      console.log(`${address}?obj=${encodeURIComponent(name)}`);
    }
    if (names.length === 0) {
      console.log(`${address} (no OBJ file in ${directory} yet)`);
    }
  } catch (error) {
    console.error(error.code === 'EADDRINUSE'
      ? `view: port ${port} is in use; name another after the directory`
      : `view: ${error.message}`);
    process.exit(1);
  }
}
