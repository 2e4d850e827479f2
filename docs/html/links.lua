-- For pandoc: links to Markdown pages lead to their HTML, and the first heading names the page.
function Link(link)
  if not link.target:match("^%a+:") then
    link.target = link.target:gsub("%.md$", ".html"):gsub("%.md#", ".html#")
  end
  return link
end

function Pandoc(page)
  page.meta.pagetitle = pandoc.utils.stringify(page.blocks[1].content) .. " - quor"
  return page
end
