:setvar Col B
create table [$(Name)] ([$(Col)] int)
%%
alter table @schema.T add C int -- x /* y */
%%
<Project><DefaultCollation>Polish_CI_AS</DefaultCollation></Project>
