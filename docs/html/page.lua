-- For pandoc: the first heading names the page, and tables scroll where they are wider than the screen.
function Table(table)
  return pandoc.Div(table, {class = "table"})
end

function Pandoc(page)
  page.meta.pagetitle = pandoc.utils.stringify(page.blocks[1].content) .. " - quor"
  return page
end
