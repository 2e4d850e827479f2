// picture.js OBJ PNG [NAME=VALUE...]: what the viewer shows of an OBJ. The rest are parameters of
// the viewer's address (main.js): direction=X,Y,Z minimum=NUMBER maximum=NUMBER unit=TEXT isolines=
// and so on.

import {basename, dirname} from 'node:path';
import {closeBrowser, opened, withViewer} from './browser.js';

const [obj, png, ...parameters] = process.argv.slice(2);
const query = new URLSearchParams(parameters.map((parameter) => parameter.split('=', 2)));
query.set('obj', basename(obj));
query.set('plain', '');

const size = {viewport: {width: 900, height: 600}, deviceScaleFactor: 4 / 3};
try {
  await withViewer(dirname(obj), size, async (page, address) => {
    await page.goto(`${address}?${query}`);
    await opened(page);
    const message = await page.textContent('#message');
    if (message && !message.startsWith('* ')) {  // that is a remark on the error
      throw new Error(message);
    }
    await page.screenshot({path: png});
  });
} finally {
  await closeBrowser();
}
