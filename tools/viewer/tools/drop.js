// drop.js VIEWER PNG FILE...: opens a viewer's page from the disk, as a user does, and gives it the files
// of a result. Prints what the legend says, a line each, and makes a picture.

import {resolve} from 'node:path';
import {pathToFileURL} from 'node:url';
import {closeBrowser, opened, withPage} from './browser.js';

const [viewer, png, ...files] = process.argv.slice(2);
try {
  await withPage({viewport: {width: 900, height: 600}}, async (page) => {
    await page.goto(String(pathToFileURL(resolve(viewer))));
    await page.setInputFiles('#open', files);
    const state = await opened(page);
    const message = await page.textContent('#message');
    if (state !== 'ready' || message) {
      throw new Error(message);
    }
    for (const id of ['field', 'high', 'low']) {
      console.log(await page.textContent(`#${id}`));
    }
    await page.screenshot({path: png});
  });
} finally {
  await closeBrowser();
}
